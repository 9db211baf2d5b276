#pragma once

// The messages of the program's document and batch layers, kept together so they are easy to
// find and translate.
namespace app::strings {
inline constexpr char kCannotSaveFile[] = "Cannot save the file";
inline constexpr char kCampaignNotSupported[] =
    "Campaign databases (.qew) are not supported yet by this version of the program.";
} // namespace app::strings
