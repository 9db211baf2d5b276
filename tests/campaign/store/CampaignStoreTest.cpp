#include "campaign/store/CampaignStore.h"
#include "campaign/CampaignBuilder.h"
#include "campaign/schema/CampaignDatabase.h"
#include "campaign/schema/CatalogueTestUtil.h"
#include "common/TestUtil.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;
using campaign::LoadCampaign;
using campaign::SaveCampaign;
using util::sql::Connection;
using util::sql::Dialect;
using namespace varnel_wave;
using namespace varnel_wave::campaigntest;

namespace {

// --- a campaign written out field by field, so that two campaigns compare line by line ---

template <typename... Fields> QString Line(const Fields&... fields) {
    return QStringList{QVariant(fields).toString()...}.join(u'|');
}

std::string Describe(const CCampaign& c) {
    QStringList lines{Line(c.m_name, c.m_description, c.m_versionNumber)};
    for (const auto& w : c.Waves()) {
        lines.append(Line("wave", w->m_waveID, w->m_waveOrder, w->m_name, w->m_description,
                          w->m_waveStart, w->m_waveEnd, w->m_waveMidpoint));
        for (const CVolume* v : w->Volumes())
            lines.append(u" lists volume %1"_s.arg(v->m_volumeID));
    }
    for (const auto& v : c.Volumes())
        lines.append(
            Line("volume", v->m_volumeID, v->m_name, v->m_waveID, v->m_inheritsFromVolumeID,
                 v->m_sourceType, v->m_metaData, v->m_caseData, v->m_isMatchingStrict,
                 v->m_questionMatchingMethods, v->m_responseMatchingMethods, v->m_isMainVolume,
                 v->m_interviewMergeMethod, v->m_mainVolumeLinkQuestionID,
                 v->m_thisVolumeLinkQuestionID, v->m_status, v->m_caseSensitiveMatching,
                 v->m_matchUsingAncestorValues, v->m_addNoNewQuestions,
                 v->m_reconciliationSourceQuestionIDs, v->m_wave ? v->m_wave->m_waveID : -1));
    for (const auto& q : c.Questions()) {
        lines.append(Line(
            "question", q->m_questionID, q->m_isDeleted, q->m_order, q->m_shortcut, q->m_indent,
            q->m_elementType, q->m_questionType, q->m_isDontKnow, q->m_isSemiOpen, q->m_isScale,
            q->m_isMultiple, q->m_isRanked, q->m_maxResponseCount, q->m_decimals, q->m_minValue,
            q->m_maxValue, q->m_isLevelLink, q->m_linkQuestionID, q->m_isProbabilityQuestion,
            q->m_dateType, q->m_questionClassID, q->m_versions, q->m_userData, q->m_isDevelopLevels,
            q->m_appearanceVolumeID, q->m_deletionWaveID, q->m_isVisibleInAnalyse, q->m_tags));
        for (const auto& x : q->m_captions)
            lines.append(Line(" caption", x->m_questionID, x->m_languageID, x->m_longCaption,
                              x->m_shortCaption));
        for (const auto& x : q->m_matchings)
            lines.append(Line(" matching", x->m_questionID, x->m_volumeID, x->m_sourceID,
                              x->m_startVolumeID, x->m_endVolumeID));
        for (const auto& m : q->m_modalities) {
            lines.append(Line(" response", m->m_modalityID, m->m_questionID, m->m_isDeleted,
                              m->m_modalityOrder, m->m_value, m->m_entryCode, m->m_isExclusive,
                              m->m_rotationBehaviour, m->m_versions, m->m_userData,
                              m->m_appearanceVolumeID, m->m_deletionWaveID, m->m_baseType,
                              m->m_tags));
            for (const auto& x : m->m_captions)
                lines.append(Line("  caption", x->m_modalityID, x->m_questionID, x->m_languageID,
                                  x->m_shortCaption));
            for (const auto& x : m->m_matchings)
                lines.append(Line("  matching", x->m_modalityID, x->m_questionID, x->m_volumeID,
                                  x->m_modalitySourceID, x->m_startVolumeID, x->m_endVolumeID));
            for (const auto& x : m->m_mergings)
                lines.append(Line("  merging", x->m_masterModalityID, x->m_childModalityID,
                                  x->m_mergeVolumeID));
        }
    }
    for (const CModality* m : c.Modalities())
        lines.append(u"listed response %1"_s.arg(m->m_modalityID));
    for (const auto& x : c.QuestionClasses())
        lines.append(Line("class", x->m_questionClassID, x->m_caption));
    for (const auto& x : c.Languages())
        lines.append(Line("language", x->m_languageID, x->m_isDefault, x->m_languageName));
    for (const auto& x : c.Versions())
        lines.append(Line("version", x->m_versionID, x->m_longCaption, x->m_shortCaption));
    for (const auto& x : c.Tags())
        lines.append(Line("tag", x->m_tagID, x->m_caption, x->m_description));
    return lines.join(u'\n').toStdString();
}

std::string Load(const QString& location) {
    CCampaign loaded;
    const util::Outcome read = LoadCampaign(location, loaded);
    EXPECT_TRUE(read) << read.Reason().toStdString();
    return Describe(loaded);
}

class CampaignStoreTest : public testutil::EachEngineTest {
protected:
    void SetUp() override {
        m_location = NewLocation(u"campaign"_s);
        ASSERT_FALSE(m_location.isEmpty());
        const util::Outcome created = campaign::CreateDatabase(m_location);
        ASSERT_TRUE(created) << created.Reason().toStdString();
    }

    void Save(const CCampaign& c) {
        const util::Outcome saved = SaveCampaign(m_location, c);
        ASSERT_TRUE(saved) << saved.Reason().toStdString();
    }

    // Every row of a query, its values joined by '|'.
    QStringList Rows(const char* sql) {
        Connection db;
        EXPECT_TRUE(db.Open(m_location));
        return testutil::Rows(db, QLatin1String(sql));
    }

    QString m_location;
};

// One database through its life: saved, a save that fails half-way, saved again smaller, rows a
// damaged file may hold, and captions written alone.
TEST_P(CampaignStoreTest, SavesLoadBackEqualInPlaceAndAFailedSaveChangesNothing) {
    const auto built = BuildCampaign();
    Save(*built);
    // The empty French short caption and wave description are no text, not a changed one.
    EXPECT_EQ(Rows(R"(SELECT COUNT(*) FROM "QuestionCaptions")"), QStringList{"6"});

    CCampaign changed(*built);
    changed.m_name = u"Changed"_s;
    changed.Questions()[0]->m_captions[0]->m_longCaption = u"Changed caption"_s;
    // Appearing in a volume the campaign does not hold breaks a relation.
    changed.AddQuestion(Question(400, 4, 77));
    const util::Outcome failed = SaveCampaign(m_location, changed);
    ASSERT_FALSE(failed);
    EXPECT_TRUE(failed.Reason().contains("CDBAccessADO::SaveQuestions"_L1))
        << failed.Reason().toStdString();
    // Loads back as first saved: every field round-trips and the failed save left nothing.
    EXPECT_EQ(Load(m_location), Describe(*built));

    // Waves exchanging their places pass each other's unique order; lists saved out of their
    // tables' sort orders load back in them.
    const auto smaller = BuildCampaign(false);
    const auto unsorted = BuildCampaign(false, false);
    smaller->m_name = unsorted->m_name = u"Renamed"_s;
    Save(*unsorted);
    // Question 300 went with its captions and matching, the second tag with it.
    EXPECT_EQ(Rows(R"(SELECT (SELECT COUNT(*) FROM "Campaigns"), (SELECT COUNT(*) FROM "Tags"), )"
                   R"((SELECT COUNT(*) FROM "QuestionCaptions"), )"
                   R"((SELECT COUNT(*) FROM "QuestionMatchings"))"),
              QStringList{"1|1|4|2"});
    // Caption rows of owners the campaign lacks, which no relation would let in, are skipped.
    QStringList statements{uR"(INSERT INTO "QuestionCaptions" ("QuestionID", "LanguageID", )"
                           R"("LongCaption") VALUES (999, 1033, 'x'))"_s,
                           uR"(INSERT INTO "ModalityCaptions" ("ModalityID", "QuestionID", )"
                           R"("LanguageID", "ShortCaption") VALUES (9999, 100, 1033, 'y'))"_s};
    if (!Sqlite())
        statements.prepend(u"SET session_replication_role = replica"_s);
    ASSERT_TRUE(testutil::Sql(m_location, statements));
    EXPECT_EQ(Load(m_location), Describe(*smaller));

    // Captions written alone, in place per language: English changed, French left out (its row
    // must stay), German new; writing twice adds nothing.
    CQuestion question(*smaller->FindQuestion(100));
    CModality response(*smaller->FindModality(1001));
    question.m_captions.erase(question.m_captions.begin() + 1);
    question.m_captions[0]->m_longCaption = u"Your age?"_s;
    auto germanQuestion = QuestionCaption(100, 1031, "Wie alt sind Sie?", "Alter");
    // A first U+FEFF is a character: SQLite would take it for a byte order mark and drop it.
    if (Sqlite())
        germanQuestion->m_shortCaption.prepend(QChar(0xFEFF));
    const QString germanShort = germanQuestion->m_shortCaption;
    question.AddCaption(std::move(germanQuestion));
    response.m_captions.erase(response.m_captions.begin() + 1);
    auto german = std::make_unique<CModalityCaption>(*response.m_captions[0]);
    german->m_languageID = 1031;
    german->m_shortCaption = u"Ja"_s;
    response.AddCaption(std::move(german));
    {
        Connection db;
        ASSERT_TRUE(db.Open(m_location));
        for (int time = 0; time < 2; ++time) {
            ASSERT_TRUE(campaign::SaveQuestionCaptions(db, question));
            ASSERT_TRUE(campaign::SaveModalityCaptions(db, response));
        }
    }
    EXPECT_EQ(Rows(R"(SELECT "LanguageID", "LongCaption", "ShortCaption" FROM "QuestionCaptions" )"
                   R"(WHERE "QuestionID" = 100 ORDER BY 1)"),
              (QStringList{"1031|Wie alt sind Sie?|" + germanShort, "1033|Your age?|Age",
                           QString::fromUtf8("1036|Quel \xC3\xA2ge avez-vous ?|")}));
    EXPECT_EQ(Rows(R"(SELECT "LanguageID", "QuestionID", "ShortCaption" FROM "ModalityCaptions" )"
                   R"(WHERE "ModalityID" = 1001 ORDER BY 1)"),
              (QStringList{"1031|100|Ja", "1033|100|Yes", "1036|100|Oui"}));
}

TEST_P(CampaignStoreTest, ColumnsAndTablesNewerThanTheFileAreNotReadOthersMustBeThere) {
    const struct {
        const char* version;
        bool tags;
        bool ancestorValues;
        bool caseSensitive;
        bool noNewQuestions; // with the reconciliation ids
    } gates[] = {
        {"5.6.1.0", true, true, true, true},      {"5,5,2,4", true, true, true, true},
        {"5.5.2.3", false, true, true, true},     {"5.3.0.0", false, true, true, true},
        {"5.2.3.8", false, true, true, false},    {"5.2.0.0", false, true, true, false},
        {"5.1.9.4", false, true, false, false},   {"5.1.6.15", false, true, false, false},
        {"5.1.6.14", false, false, false, false}, {"", false, false, false, false},
    };
    // Question flags a file lacks hold true, as the migration adding their columns fills them
    // (question 200 holds false).
    Save(*BuildCampaign());
    ASSERT_TRUE(testutil::Sql(m_location,
                              {uR"(ALTER TABLE "Questions" DROP COLUMN "IsDevelopLevels")"_s,
                               uR"(ALTER TABLE "Questions" DROP COLUMN "IsVisibleInAnalyse")"_s}));
    CCampaign withoutFlags;
    ASSERT_TRUE(LoadCampaign(m_location, withoutFlags));
    for (const auto& question : withoutFlags.Questions()) {
        EXPECT_TRUE(question->m_isDevelopLevels) << question->m_questionID;
        EXPECT_TRUE(question->m_isVisibleInAnalyse) << question->m_questionID;
    }
    ASSERT_TRUE(campaign::CreateDatabase(m_location)); // the columns back
    for (const auto& gate : gates) {
        SCOPED_TRACE(gate.version);
        const auto c = BuildCampaign();
        c->m_versionNumber = QString::fromLatin1(gate.version);
        Save(*c);
        CCampaign loaded;
        ASSERT_TRUE(LoadCampaign(m_location, loaded));
        EXPECT_EQ(loaded.Tags().size(), gate.tags ? 2u : 0u);
        ASSERT_EQ(loaded.Volumes().size(), 3u);
        for (const auto& volume : loaded.Volumes()) {
            EXPECT_EQ(volume->m_matchUsingAncestorValues, gate.ancestorValues);
            EXPECT_EQ(volume->m_caseSensitiveMatching, gate.caseSensitive);
            EXPECT_EQ(volume->m_addNoNewQuestions, gate.noNewQuestions);
            EXPECT_EQ(volume->m_reconciliationSourceQuestionIDs.isEmpty(), !gate.noNewQuestions);
            // Columns every version has are read whatever the version.
            EXPECT_EQ(volume->m_status, 4);
        }
    }
    // A file older than tags is read without a tag table.
    ASSERT_TRUE(testutil::Sql(m_location, {uR"(DROP TABLE "Tags")"_s}));
    CCampaign loaded;
    const util::Outcome read = LoadCampaign(m_location, loaded);
    ASSERT_TRUE(read) << read.Reason().toStdString();
    EXPECT_TRUE(loaded.Tags().empty());
    EXPECT_EQ(loaded.Questions().size(), 3u);

    // Any other missing table fails the read and the save under the operation that needs it.
    const auto built = BuildCampaign();
    CCampaign renamed(*built);
    renamed.m_name = u"Renamed"_s;
    for (const char* table : {"Languages", "QuestionClasses", "Versions"}) {
        SCOPED_TRACE(table);
        ASSERT_TRUE(campaign::CreateDatabase(m_location));
        Save(*built);
        ASSERT_TRUE(testutil::Sql(m_location, {uR"(DROP TABLE "%1")"_s.arg(QLatin1String(table))}));
        CCampaign damaged;
        const util::Outcome read = LoadCampaign(m_location, damaged);
        ASSERT_FALSE(read);
        EXPECT_TRUE(read.Reason().contains("CDBAccessADO::Read"_L1 + table))
            << read.Reason().toStdString();
        const util::Outcome saved = SaveCampaign(m_location, renamed);
        ASSERT_FALSE(saved);
        EXPECT_TRUE(saved.Reason().contains("CDBAccessADO::Save"_L1 + table))
            << saved.Reason().toStdString();
        // The campaign row written before the failure went with it.
        EXPECT_EQ(Rows(R"(SELECT "Name" FROM "Campaigns")"), QStringList{"Panel"});
    }
}

INSTANTIATE_TEST_SUITE_P(Each, CampaignStoreTest, testutil::kEngines, testutil::EngineName);

TEST(CampaignStoreClosed, ReadsAndSavesWithoutADatabaseFailUnderTheirNames) {
    Connection closed;
    CCampaign c;
    const auto built = BuildCampaign();
    const struct {
        const char* name;
        util::Outcome outcome;
    } cases[] = {
        {"CDBAccessADO::ReadCampaign", LoadCampaign(closed, c)},
        {"CDBAccessADO::SaveCampaign", SaveCampaign(closed, *built)},
        {"CDBAccessADO::SaveQuestionCaptions",
         campaign::SaveQuestionCaptions(closed, *built->Questions()[0])},
        {"CDBAccessADO::SaveModalityCaptions",
         campaign::SaveModalityCaptions(closed, *built->Modalities()[0])},
    };
    for (const auto& test : cases) {
        EXPECT_FALSE(test.outcome) << test.name;
        EXPECT_TRUE(test.outcome.Reason().contains(QLatin1String(test.name))) << test.name;
    }
    // Loading a missing file fails without creating it.
    QTemporaryDir dir;
    const QString location = dir.filePath(u"missing.qew"_s);
    EXPECT_FALSE(LoadCampaign(location, c));
    EXPECT_FALSE(QFileInfo::exists(location));
}

} // namespace
