#pragma once

#include <QCoreApplication>

// The texts of the questionnaire library that users read, kept together so that they are easy to
// find and translate ("%1" and "%2" are filled by QString::arg).
namespace questionnaire::strings {

inline constexpr char kContext[] = "questionnaire";

inline constexpr char kCampaignNotSupported[] = QT_TRANSLATE_NOOP(
    "questionnaire",
    "Campaign databases (.qew) are not supported yet by this version of the program.");
inline constexpr char kNoWorkingFolder[] =
    QT_TRANSLATE_NOOP("questionnaire", "The file '%1' has no extension, so it has no working "
                                       "folder to unpack into.");
inline constexpr char kNoStore[] =
    QT_TRANSLATE_NOOP("questionnaire", "This version of the program cannot open '%1'.");

inline constexpr char kCannotWriteFileSymbolicLink[] =
    QT_TRANSLATE_NOOP("questionnaire", "Cannot write the file '%1': it is a symbolic link.");
inline constexpr char kSavingStopped[] =
    QT_TRANSLATE_NOOP("questionnaire", "The saving of '%1' was stopped.");
inline constexpr char kCannotWriteFile[] =
    QT_TRANSLATE_NOOP("questionnaire", "Cannot write the file '%1': %2");
inline constexpr char kWorkingFolderGivenUnpackPackage[] = QT_TRANSLATE_NOOP(
    "questionnaire", "No working folder was given to unpack the package '%1' into.");
inline constexpr char kWorkingFolderDoesExist[] =
    QT_TRANSLATE_NOOP("questionnaire", "The working folder '%1' does not exist.");
inline constexpr char kWorkingFolderSymbolicLink[] = QT_TRANSLATE_NOOP(
    "questionnaire", "The working folder '%1' is a symbolic link, and nothing is unpacked "
                     "through links.");
inline constexpr char kPackageHoldsCannotRead[] =
    QT_TRANSLATE_NOOP("questionnaire", "The package '%1' holds a %2 that cannot be read: %3");
inline constexpr char kCannotSavePackage[] =
    QT_TRANSLATE_NOOP("questionnaire", "Cannot save the package '%1': %2");
inline constexpr char kFolderPackIntoDoesExist[] =
    QT_TRANSLATE_NOOP("questionnaire", "The folder '%1' to pack into '%2' does not exist.");
inline constexpr char kEmptyName[] = QT_TRANSLATE_NOOP("questionnaire", "an empty name");
inline constexpr char kAbsoluteName[] = QT_TRANSLATE_NOOP("questionnaire", "an absolute name");
inline constexpr char kPathComponent[] =
    QT_TRANSLATE_NOOP("questionnaire", "a '..' path component");
inline constexpr char kEmptyPathComponent[] =
    QT_TRANSLATE_NOOP("questionnaire", "an empty or '.' path component");
inline constexpr char kPackageHoldsNothingUnpacked[] =
    QT_TRANSLATE_NOOP("questionnaire", "The package '%1' holds %2: '%3'. Nothing was unpacked.");
inline constexpr char kPackageDoesExist[] =
    QT_TRANSLATE_NOOP("questionnaire", "The package '%1' does not exist.");
inline constexpr char kFileCannotOpenedPackage[] =
    QT_TRANSLATE_NOOP("questionnaire", "The file '%1' cannot be opened as a package: %2.");
inline constexpr char kPackageHoldsEntriesMoreThan[] = QT_TRANSLATE_NOOP(
    "questionnaire", "The package '%1' holds %2 entries, more than the %3 allowed. "
                     "Nothing was unpacked.");
inline constexpr char kEntryWithoutReadableName[] =
    QT_TRANSLATE_NOOP("questionnaire", "an entry without a readable name");
inline constexpr char kEntryWith[] = QT_TRANSLATE_NOOP("questionnaire", "an entry with %1");
inline constexpr char kEntrySymbolicLink[] =
    QT_TRANSLATE_NOOP("questionnaire", "an entry that is a symbolic link");
inline constexpr char kEntryWhoseHeaderCannotRead[] =
    QT_TRANSLATE_NOOP("questionnaire", "an entry whose header cannot be read");
inline constexpr char kEncryptedEntry[] = QT_TRANSLATE_NOOP("questionnaire", "an encrypted entry");
inline constexpr char kEntryPackedMethodProgramCannot[] =
    QT_TRANSLATE_NOOP("questionnaire", "an entry packed with a method this program cannot read");
inline constexpr char kEntryUnknownSize[] =
    QT_TRANSLATE_NOOP("questionnaire", "an entry of unknown size");
inline constexpr char kEntryDeclaredLargerThanGiB[] =
    QT_TRANSLATE_NOOP("questionnaire", "an entry declared larger than %1 GiB (%2 bytes)");
inline constexpr char kMoreThanGiBDataAll[] =
    QT_TRANSLATE_NOOP("questionnaire", "more than %1 GiB of data in all, reached at the entry");
inline constexpr char kEntryCompressedMoreThanLikely[] =
    QT_TRANSLATE_NOOP("questionnaire", "an entry compressed more than %1:1, a likely ZIP bomb");
inline constexpr char kTwoEntriesSameName[] =
    QT_TRANSLATE_NOOP("questionnaire", "two entries with the same name");
inline constexpr char kEntryBothFileFolder[] =
    QT_TRANSLATE_NOOP("questionnaire", "an entry that is both a file and a folder");
inline constexpr char kPackageHoldsNoQuestionnaire[] =
    QT_TRANSLATE_NOOP("questionnaire", "The package '%1' holds no %2. Nothing was unpacked.");
inline constexpr char kCannotEmptyWorkingFolder[] = QT_TRANSLATE_NOOP(
    "questionnaire", "Cannot empty the working folder '%1': '%2' cannot be removed.");
inline constexpr char kUnpackingQuestionnaire[] =
    QT_TRANSLATE_NOOP("questionnaire", "Unpacking the questionnaire");
inline constexpr char kCannotUnpackPackageInsideWorking[] = QT_TRANSLATE_NOOP(
    "questionnaire", "Cannot unpack the package '%1': '%2' inside the working folder is "
                     "a symbolic link, and nothing is written through links.");
inline constexpr char kCannotCreateFolderWhileUnpacking[] =
    QT_TRANSLATE_NOOP("questionnaire", "Cannot create the folder '%1' while unpacking the "
                                       "package '%2'.");
inline constexpr char kCannotCreateFileWhileUnpacking[] =
    QT_TRANSLATE_NOOP("questionnaire", "Cannot create the file '%1' while unpacking the package "
                                       "'%2': %3");
inline constexpr char kCannotReadEntryPackage[] =
    QT_TRANSLATE_NOOP("questionnaire", "Cannot read the entry '%1' of the package '%2': %3");
inline constexpr char kEntryPackageHoldsMoreBytes[] =
    QT_TRANSLATE_NOOP("questionnaire", "The entry '%1' of the package '%2' holds more bytes than "
                                       "the %3 it declares; unpacking stopped.");
inline constexpr char kUnpackingStopped[] =
    QT_TRANSLATE_NOOP("questionnaire", "The unpacking of '%1' was stopped.");
inline constexpr char kCannotWriteFileWhileUnpacking[] =
    QT_TRANSLATE_NOOP("questionnaire", "Cannot write the file '%1' while unpacking the package "
                                       "'%2': %3");
inline constexpr char kCannotSavePackageTemporaryFile[] = QT_TRANSLATE_NOOP(
    "questionnaire", "Cannot save the package '%1': no temporary file can be created "
                     "in '%2': %3");
inline constexpr char kCannotAddPackage[] =
    QT_TRANSLATE_NOOP("questionnaire", "Cannot add '%1' to the package '%2': %3");
inline constexpr char kPackingQuestionnaire[] =
    QT_TRANSLATE_NOOP("questionnaire", "Packing the questionnaire");
inline constexpr char kQuestionHasUnknownType[] =
    QT_TRANSLATE_NOOP("questionnaire", "question %1 has an unknown type");
inline constexpr char kQuestionListsVersionsIds[] =
    QT_TRANSLATE_NOOP("questionnaire", "question %1 lists versions that are not ids");
inline constexpr char kResponseListsVersionsIds[] =
    QT_TRANSLATE_NOOP("questionnaire", "a response lists versions that are not ids");
inline constexpr char kReadingQuestions[] =
    QT_TRANSLATE_NOOP("questionnaire", "Reading the questions");
inline constexpr char kReadingResponses[] =
    QT_TRANSLATE_NOOP("questionnaire", "Reading the responses");
inline constexpr char kReadingStopped[] =
    QT_TRANSLATE_NOOP("questionnaire", "the reading was stopped");
inline constexpr char kValueColumnBitWholeNumber[] =
    QT_TRANSLATE_NOOP("questionnaire", "a value of column %1 is not a 32-bit whole number: '%2'");
inline constexpr char kDatabaseDamaged[] =
    QT_TRANSLATE_NOOP("questionnaire", "The database is damaged: %1");
inline constexpr char kUnknownKindQuestionnaireDatabase[] =
    QT_TRANSLATE_NOOP("questionnaire", "Unknown kind of questionnaire database.");
inline constexpr char kFileCannotFound[] =
    QT_TRANSLATE_NOOP("questionnaire", "The file '%1' cannot be found.");
inline constexpr char kFileQuestionnaireDatabase[] =
    QT_TRANSLATE_NOOP("questionnaire", "The file '%1' is not a questionnaire database: %2");
inline constexpr char kCannotReadQuestionnaire[] =
    QT_TRANSLATE_NOOP("questionnaire", "Cannot read the questionnaire '%1': %2");
inline constexpr char kRowsReferQuestionsResponsesRoutings[] =
    QT_TRANSLATE_NOOP("questionnaire", "%1 rows of '%2' refer to questions, responses or routings "
                                       "that do not exist and were left out.");
inline constexpr char kLastSavedOlderVersionProgram[] =
    QT_TRANSLATE_NOOP("questionnaire", "'%1' was last saved by an older version of the program.");
inline constexpr char kDatabaseOpen[] =
    QT_TRANSLATE_NOOP("questionnaire", "the database is not open.");
inline constexpr char kTransactionOpen[] =
    QT_TRANSLATE_NOOP("questionnaire", "no transaction is open.");
inline constexpr char kTableMissingQuestionnaireDatabase[] = QT_TRANSLATE_NOOP(
    "questionnaire", "The table '%1' is missing: this is not a questionnaire database.");
inline constexpr char kColumnMissingType[] =
    QT_TRANSLATE_NOOP("questionnaire", "The column '%1.%2' is missing or is not of type %3.");
inline constexpr char kDatabaseDoesSayWhichFormat[] =
    QT_TRANSLATE_NOOP("questionnaire", "The database does not say which format it has.");
inline constexpr char kDatabaseNamesUnknownFormat[] =
    QT_TRANSLATE_NOOP("questionnaire", "The database names an unknown format.");
inline constexpr char kDatabaseHasFormatWrittenNewer[] = QT_TRANSLATE_NOOP(
    "questionnaire", "The database has format %1, written by a newer version of the "
                     "program; this version reads format %2.");
inline constexpr char kStopped[] = QT_TRANSLATE_NOOP("questionnaire", "The saving was stopped.");
inline constexpr char kWritingQuestionnaire[] =
    QT_TRANSLATE_NOOP("questionnaire", "Writing the questionnaire");
inline constexpr char kReadingQuestionnaire[] =
    QT_TRANSLATE_NOOP("questionnaire", "Reading the questionnaire");
inline constexpr char kXmlReadingStopped[] =
    QT_TRANSLATE_NOOP("questionnaire", "The reading was stopped.");
inline constexpr char kNotAQuestionnaire[] =
    QT_TRANSLATE_NOOP("questionnaire", "this is not a questionnaire (no <questionnaire> element)");
inline constexpr char kAttributeMissing[] =
    QT_TRANSLATE_NOOP("questionnaire", "attribute '%1' is missing");
inline constexpr char kAttributeWholeNumber[] =
    QT_TRANSLATE_NOOP("questionnaire", "attribute '%1' is not a whole number");
inline constexpr char kAttributeHexadecimal[] =
    QT_TRANSLATE_NOOP("questionnaire", "attribute '%1' is not hexadecimal");
inline constexpr char kVersionsHoldsSomethingOtherThan[] =
    QT_TRANSLATE_NOOP("questionnaire", "'versions' holds something other than ids");
inline constexpr char kAttributeHexHexadecimal[] =
    QT_TRANSLATE_NOOP("questionnaire", "attribute 'hex' is not hexadecimal");
inline constexpr char kLanguageListedTwice[] =
    QT_TRANSLATE_NOOP("questionnaire", "language %1 is listed twice");
inline constexpr char kVersionListedTwice[] =
    QT_TRANSLATE_NOOP("questionnaire", "version %1 is listed twice");
inline constexpr char kUnknownQuestionType[] =
    QT_TRANSLATE_NOOP("questionnaire", "unknown question type '%1'");
// Negative ids name kinds of captions (a question's short caption, a routing's message...): a
// question or response holding one would be read and written as another caption.
inline constexpr char kQuestionIdNegative[] =
    QT_TRANSLATE_NOOP("questionnaire", "question id %1 is below 0");
inline constexpr char kResponseIdNegative[] =
    QT_TRANSLATE_NOOP("questionnaire", "response id %1 of question %2 is below 0");
inline constexpr char kFormatWrittenNewer[] =
    QT_TRANSLATE_NOOP("questionnaire", "format %1 was written by a newer version of the program");
inline constexpr char kQuestionIdUsedTwice[] =
    QT_TRANSLATE_NOOP("questionnaire", "question id %1 is used twice");
inline constexpr char kResponseIdUsedTwiceQuestion[] =
    QT_TRANSLATE_NOOP("questionnaire", "response id %1 is used twice in question %2");
inline constexpr char kRoutingIdUsedTwice[] =
    QT_TRANSLATE_NOOP("questionnaire", "routing id %1 is used twice");
inline constexpr char kSystemMessageDoesExist[] =
    QT_TRANSLATE_NOOP("questionnaire", "system message %1 does not exist (2 to 43)");
inline constexpr char kCannotOpenFile[] =
    QT_TRANSLATE_NOOP("questionnaire", "Cannot open the file '%1': %2");
inline constexpr char kCannotOpenFileNoReason[] =
    QT_TRANSLATE_NOOP("questionnaire", "Cannot open the file '%1'");
inline constexpr char kCannotReadFile[] =
    QT_TRANSLATE_NOOP("questionnaire", "Cannot read the file '%1': %2");
inline constexpr char kXmlPosition[] =
    QT_TRANSLATE_NOOP("questionnaire", "XML line %1, column %2: %3");
inline constexpr char kNameExpected[] = QT_TRANSLATE_NOOP("questionnaire", "a name was expected");
inline constexpr char kSlashWithoutGreaterThan[] =
    QT_TRANSLATE_NOOP("questionnaire", "'>' was expected after '/'");
inline constexpr char kSpaceExpectedBetweenAttributes[] =
    QT_TRANSLATE_NOOP("questionnaire", "a space was expected between attributes");
inline constexpr char kExpectedAfterAttributeName[] =
    QT_TRANSLATE_NOOP("questionnaire", "'=' was expected after an attribute name");
inline constexpr char kAttributeValueMustQuoted[] =
    QT_TRANSLATE_NOOP("questionnaire", "an attribute value must be quoted");
inline constexpr char kLessThanInAttribute[] =
    QT_TRANSLATE_NOOP("questionnaire", "'<' is not allowed in an attribute value");
inline constexpr char kAttributeGivenTwice[] =
    QT_TRANSLATE_NOOP("questionnaire", "the attribute '%1' is given twice");
inline constexpr char kDocumentEndsInsideTag[] =
    QT_TRANSLATE_NOOP("questionnaire", "the document ends inside a tag");
inline constexpr char kExpectedEndTag[] =
    QT_TRANSLATE_NOOP("questionnaire", "'>' was expected to end the tag");
inline constexpr char kDocumentEndsInsideMarkup[] =
    QT_TRANSLATE_NOOP("questionnaire", "the document ends inside markup");
inline constexpr char kCharacterDataOutsideRootElement[] =
    QT_TRANSLATE_NOOP("questionnaire", "character data outside the root element");
inline constexpr char kDocumentTypeDeclarationsAccepted[] =
    QT_TRANSLATE_NOOP("questionnaire", "document type declarations are not accepted");
inline constexpr char kUnknownMarkup[] = QT_TRANSLATE_NOOP("questionnaire", "unknown markup");
inline constexpr char kCharacterUAllowedXML[] =
    QT_TRANSLATE_NOOP("questionnaire", "the character U+%1 is not allowed in XML");
inline constexpr char kTextAfterRootElement[] =
    QT_TRANSLATE_NOOP("questionnaire", "text after the root element");
inline constexpr char kStartTagExpected[] =
    QT_TRANSLATE_NOOP("questionnaire", "a start tag was expected");
inline constexpr char kReferenceOutsideRootElement[] =
    QT_TRANSLATE_NOOP("questionnaire", "a reference outside the root element");
inline constexpr char kFileCouldReadEnd[] =
    QT_TRANSLATE_NOOP("questionnaire", "the file could not be read to its end");
inline constexpr char kDocumentEndsBeforeRootElement[] =
    QT_TRANSLATE_NOOP("questionnaire", "the document ends before its root element does");
inline constexpr char kDocumentHoldsElement[] =
    QT_TRANSLATE_NOOP("questionnaire", "the document holds no element");
inline constexpr char kSecondRootElement[] =
    QT_TRANSLATE_NOOP("questionnaire", "a second root element");
inline constexpr char kEndTagWithoutStartTag[] =
    QT_TRANSLATE_NOOP("questionnaire", "an end tag without a start tag");
inline constexpr char kEndTagDoesMatchStart[] =
    QT_TRANSLATE_NOOP("questionnaire", "the end tag '%1' does not match the start tag '%2'");
inline constexpr char kAmpersandWithoutReference[] =
    QT_TRANSLATE_NOOP("questionnaire", "'&' starts no reference");
inline constexpr char kReferenceNotACharacter[] =
    QT_TRANSLATE_NOOP("questionnaire", "'&%1;' is not a character XML allows");
inline constexpr char kEntityDefined[] =
    QT_TRANSLATE_NOOP("questionnaire", "the entity '%1' is not defined");
inline constexpr char kDocumentEndsInsideElement[] =
    QT_TRANSLATE_NOOP("questionnaire", "the document ends inside an element");
inline constexpr char kSurrogateWithoutPair[] =
    QT_TRANSLATE_NOOP("questionnaire", "a surrogate without its pair");
inline constexpr char kDocumentEndsInsideCDATASection[] =
    QT_TRANSLATE_NOOP("questionnaire", "the document ends inside a CDATA section");
inline constexpr char kElementWhereOnlyTextExpected[] =
    QT_TRANSLATE_NOOP("questionnaire", "an element where only text was expected");
inline constexpr char kCannotCreateFile[] =
    QT_TRANSLATE_NOOP("questionnaire", "Cannot create the file '%1': %2");

} // namespace questionnaire::strings

namespace questionnaire {
// A text of the library in the user's language.
inline QString Tr(const char* text) {
    return QCoreApplication::translate(strings::kContext, text);
}
} // namespace questionnaire
