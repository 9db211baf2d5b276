#pragma once

// The dictionary's messages, kept together so they are easy to find and translate.
namespace dictionary::strings {
inline constexpr char kCannotCreateDirectory[] = "Cannot create directory!";
inline constexpr char kCannotLoad[] = "The dictionnary is either empty or cannot be found!";
inline constexpr char kDamagedKept[] =
    "The dictionary file '%1' could not be read whole; it was kept as '%2' before saving.";
inline constexpr char kConflictTitle[] = "Conflict while adding to the dictionary";
inline constexpr char kConflictPrompt[] =
    "Please select a line to either create a new entry or merge it with an existing entry";
inline constexpr char kSelectAnEntry[] = "Please select an entry";
inline constexpr char kExistingEntry[] = "Existing entry no %d";
inline constexpr char kNewEntry[] = "New entry";
inline constexpr char kEntriesAdded[] = "%d entrie(s) have been added to the dictionary";
inline constexpr char kCaptionsTranslated[] = "%d captions have been translated";
} // namespace dictionary::strings
