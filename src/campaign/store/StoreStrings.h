#pragma once

#include <QCoreApplication>

// The texts of the campaign store that users read, kept together so that they are easy to find
// and translate ("%1" and so on are filled by QString::arg).
namespace campaign::storestrings {

inline constexpr char kContext[] = "campaign";

// The operation's name, then the database's and the driver's account of the error.
inline constexpr char kDatabaseError[] = QT_TRANSLATE_NOOP("campaign", "ADO error %1 - %2 - %3");
inline constexpr char kUnknownError[] = QT_TRANSLATE_NOOP("campaign", "Unknown error in '%1'");

} // namespace campaign::storestrings

// The operations a failure is reported under, as users and logs know them.
namespace campaign::operation {

inline constexpr char kOpen[] = "CDBAccessADO::Open";
inline constexpr char kReadCampaign[] = "CDBAccessADO::ReadCampaign";
inline constexpr char kReadWaves[] = "CDBAccessADO::ReadWaves";
inline constexpr char kReadVolumes[] = "CDBAccessADO::ReadVolumes";
inline constexpr char kReadQuestions[] = "CDBAccessADO::ReadQuestions";
inline constexpr char kReadQuestionMatchings[] = "CDBAccessADO::ReadQuestionMatchings";
inline constexpr char kReadQuestionClasses[] = "CDBAccessADO::ReadQuestionClasses";
inline constexpr char kReadQuestionCaptions[] = "CDBAccessADO::ReadQuestionCaptions";
inline constexpr char kReadModalityMatchings[] = "CDBAccessADO::ReadModalityMatchings";
inline constexpr char kReadModalityCaptions[] = "CDBAccessADO::ReadModalityCaptions";
inline constexpr char kReadModalities[] = "CDBAccessADO::ReadModalities";
inline constexpr char kReadLanguages[] = "CDBAccessADO::ReadLanguages";
inline constexpr char kReadModalityMergings[] = "CDBAccessADO::ReadModalityMergings";
inline constexpr char kReadVersions[] = "CDBAccessADO::ReadVersions";
inline constexpr char kReadTags[] = "CDBAccessADO::ReadTags";

inline constexpr char kSaveCampaign[] = "CDBAccessADO::SaveCampaign";
inline constexpr char kSaveLanguages[] = "CDBAccessADO::SaveLanguages";
inline constexpr char kSaveQuestionClasses[] = "CDBAccessADO::SaveQuestionClasses";
inline constexpr char kSaveWaves[] = "CDBAccessADO::SaveWaves";
inline constexpr char kSaveQuestions[] = "CDBAccessADO::SaveQuestions";
inline constexpr char kSaveModalities[] = "CDBAccessADO::SaveModalities";
inline constexpr char kSaveModalityMergings[] = "CDBAccessADO::SaveModalityMergings";
inline constexpr char kSaveVersions[] = "CDBAccessADO::SaveVersions";
inline constexpr char kSaveTags[] = "CDBAccessADO::SaveTags";
inline constexpr char kSaveQuestionCaptions[] = "CDBAccessADO::SaveQuestionCaptions";
inline constexpr char kSaveAllQuestionCaptions[] = "CDBAccessADO::SaveAllQuestionCaptions";
inline constexpr char kSaveModalityCaptions[] = "CDBAccessADO::SaveModalityCaptions";
inline constexpr char kSaveAllModalityCaptions[] = "CDBAccessADO::SaveAllModalityCaptions";
inline constexpr char kDeleteRemovedWaves[] = "CDBAccessADO::DeleteRemovedWaves";
inline constexpr char kDeleteRemovedVolumes[] = "CDBAccessADO::DeleteRemovedVolumes";
inline constexpr char kDeleteRemovedQuestions[] = "CDBAccessADO::DeleteRemovedQuestions";
inline constexpr char kDeleteRemovedModalities[] = "CDBAccessADO::DeleteRemovedModalities";
inline constexpr char kDeleteRemovedQuestionMatchings[] =
    "CDBAccessADO::DeleteRemovedQuestionMatchings";
inline constexpr char kDeleteRemovedModalityMatchings[] =
    "CDBAccessADO::DeleteRemovedModalityMatchings";

} // namespace campaign::operation
