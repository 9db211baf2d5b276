#pragma once

#include "campaign/Campaign.h"

#include <algorithm>
#include <memory>
#include <vector>

// Campaigns built in memory with a value in every field, for the campaign, store and
// questionnaire tests.
namespace varnel_wave::campaigntest {

using namespace Qt::StringLiterals;

inline std::unique_ptr<CQuestionCaption> QuestionCaption(qint32 question, qint32 language,
                                                         const char* longCaption,
                                                         const char* shortCaption) {
    auto caption = std::make_unique<CQuestionCaption>();
    caption->m_questionID = question;
    caption->m_languageID = language;
    caption->m_longCaption = QString::fromUtf8(longCaption);
    caption->m_shortCaption = QString::fromUtf8(shortCaption);
    return caption;
}

inline std::unique_ptr<CModality> Response(qint32 id, qint32 question, qint32 order, const char* en,
                                           const char* fr) {
    auto m = std::make_unique<CModality>();
    m->m_modalityID = id;
    m->m_questionID = question;
    m->m_modalityOrder = order;
    m->m_value = order + 0.5;
    m->m_entryCode = u"E%1"_s.arg(id);
    m->m_isExclusive = order == 2;
    m->m_rotationBehaviour = 3;
    m->m_userData = u"data of %1"_s.arg(id);
    m->m_appearanceVolumeID = 11;
    m->m_deletionWaveID = id % 2 ? 0 : 2;
    m->m_isDeleted = id % 2 == 0;
    m->m_baseType = -7;
    m->m_tags = u"t%1"_s.arg(id);
    for (const auto& [language, text] : {std::pair{1033, en}, std::pair{1036, fr}}) {
        auto caption = std::make_unique<CModalityCaption>();
        caption->m_modalityID = id;
        caption->m_questionID = question;
        caption->m_languageID = language;
        caption->m_shortCaption = QString::fromUtf8(text);
        m->AddCaption(std::move(caption));
    }
    auto matching = std::make_unique<CModalityMatching>();
    matching->m_modalityID = id;
    matching->m_questionID = question;
    matching->m_volumeID = 11;
    matching->m_modalitySourceID = u"S%1"_s.arg(id);
    matching->m_startVolumeID = 11;
    matching->m_endVolumeID = 999999999;
    m->AddMatching(std::move(matching));
    return m;
}

inline std::unique_ptr<CQuestion> Question(qint32 id, qint32 order, qint32 volume) {
    auto q = std::make_unique<CQuestion>();
    q->m_questionID = id;
    q->m_order = order;
    q->m_shortcut = u"Q%1"_s.arg(id);
    q->m_indent = 1;
    q->m_elementType = 2;
    q->m_questionType = 3;
    q->m_isDontKnow = true;
    q->m_isScale = true;
    q->m_isRanked = true;
    q->m_maxResponseCount = 4;
    q->m_decimals = 2;
    q->m_minValue = -1.25;
    q->m_maxValue = 1e6;
    q->m_isLevelLink = true;
    q->m_linkQuestionID = 7;
    q->m_dateType = 5;
    q->m_questionClassID = 1;
    q->m_versions = u"1;2"_s;
    q->m_isDevelopLevels = id != 200;
    q->m_appearanceVolumeID = volume;
    q->m_isVisibleInAnalyse = id != 200;
    q->m_tags = u"a,b"_s;
    // Languages in id order, as they come back.
    q->AddCaption(QuestionCaption(id, 1033, "How old are you?", "Age"));
    q->AddCaption(QuestionCaption(id, 1036, "Quel \xC3\xA2ge avez-vous ?", ""));
    auto matching = std::make_unique<CQuestionMatching>();
    matching->m_questionID = id;
    matching->m_volumeID = volume;
    matching->m_sourceID = u"SRC%1"_s.arg(id);
    matching->m_startVolumeID = volume;
    matching->m_endVolumeID = 999999999;
    q->AddMatching(std::move(matching));
    return q;
}

// Two waves and three volumes; questions 100 and 200 with responses (the even-numbered one
// deleted), 300 without; English the default of two languages. The smaller campaign leaves out
// question 300 and the second tag, and its waves and its questions exchange their places. Lists
// are in the order they load back in; unsorted, the waves, the volumes of wave 1, the questions
// and the captions and responses of question 100 are in the reverse of it.
inline std::unique_ptr<CCampaign> BuildCampaign(bool full = true, bool sorted = true) {
    auto c = std::make_unique<CCampaign>();
    c->m_name = u"Panel"_s;
    // A first U+FEFF is a character, which neither engine may take for a byte order mark.
    c->m_description = QChar(0xFEFF) + u"A panel\nin two waves"_s;
    c->m_versionNumber = u"5,6,1,0"_s;
    for (qint32 w : full || !sorted ? std::vector{1, 2} : std::vector{2, 1}) {
        auto wave = std::make_unique<CWave>();
        wave->m_waveID = w;
        wave->m_waveOrder = full ? w : 3 - w;
        wave->m_name = u"Wave %1"_s.arg(w);
        wave->m_description = w == 1 ? u"first"_s : QString();
        wave->m_waveStart = 45000.25 + w;
        wave->m_waveEnd = 45030.5 + w;
        wave->m_waveMidpoint = 45015.75 + w;
        c->AddWave(std::move(wave));
    }
    for (qint32 v : full     ? std::vector{11, 12, 21}
                    : sorted ? std::vector{21, 11, 12}
                             : std::vector{12, 11, 21}) {
        auto volume = std::make_unique<CVolume>();
        volume->m_volumeID = v;
        volume->m_name = u"Volume %1"_s.arg(v);
        volume->m_waveID = v / 10;
        volume->m_inheritsFromVolumeID = v == 21 ? 11 : 0;
        volume->m_sourceType = 2;
        volume->m_metaData = u"meta %1"_s.arg(v);
        volume->m_caseData = u"cases %1"_s.arg(v);
        volume->m_isMatchingStrict = v == 12;
        volume->m_questionMatchingMethods = u"name"_s;
        volume->m_isMainVolume = v == 11;
        volume->m_interviewMergeMethod = 1;
        volume->m_mainVolumeLinkQuestionID = 100;
        volume->m_thisVolumeLinkQuestionID = u"ID"_s;
        volume->m_status = 4;
        volume->m_caseSensitiveMatching = true;
        volume->m_matchUsingAncestorValues = true;
        volume->m_addNoNewQuestions = true;
        volume->m_reconciliationSourceQuestionIDs = u"1,2"_s;
        c->AddVolume(std::move(volume));
    }
    auto first = Question(100, full ? 1 : 2, 11);
    first->AddModality(Response(1001, 100, 1, "Yes", "Oui"));
    first->AddModality(Response(1002, 100, 2, "No", ""));
    auto merging = std::make_unique<CModalityMerging>();
    merging->m_masterModalityID = 1001;
    merging->m_childModalityID = 1002;
    merging->m_mergeVolumeID = 12;
    first->m_modalities[0]->AddMerging(std::move(merging));
    auto second = Question(200, full ? 2 : 1, 21);
    auto maybe = Response(2001, 200, 1, "Maybe", "Peut-\xC3\xAAtre");
    if (full || !sorted) {
        if (!sorted) {
            std::reverse(first->m_captions.begin(), first->m_captions.end());
            std::reverse(first->m_modalities.begin(), first->m_modalities.end());
        }
        second->AddModality(std::move(maybe));
        c->AddQuestion(std::move(first));
        c->AddQuestion(std::move(second));
    } else { // questions by their order, then responses by their question's id
        c->AddQuestion(std::move(second));
        c->AddQuestion(std::move(first));
        c->AddModality(std::move(maybe));
    }
    if (full)
        c->AddQuestion(Question(300, 3, 12));
    auto questionClass = std::make_unique<CQuestionClass>();
    questionClass->m_questionClassID = 1;
    questionClass->m_caption = u"Demography"_s;
    c->AddQuestionClass(std::move(questionClass));
    for (const auto& [id, name] : {std::pair{1033, "English"}, std::pair{1036, "French"}}) {
        auto language = std::make_unique<CLanguage>();
        language->m_languageID = id;
        language->m_isDefault = id == 1033;
        language->m_languageName = QString::fromLatin1(name);
        c->AddLanguage(std::move(language));
    }
    auto version = std::make_unique<CVersion>();
    version->m_versionID = 1;
    version->m_longCaption = u"Long"_s;
    version->m_shortCaption = u"L"_s;
    c->AddVersion(std::move(version));
    for (qint32 t = 1; t <= (full ? 2 : 1); ++t) {
        auto tag = std::make_unique<CQuelSurveyTag>();
        tag->m_tagID = t;
        tag->m_caption = u"tag %1"_s.arg(t);
        tag->m_description = u"about %1"_s.arg(t);
        c->AddTag(std::move(tag));
    }
    return c;
}

} // namespace varnel_wave::campaigntest
