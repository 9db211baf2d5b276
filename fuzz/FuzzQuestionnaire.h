#pragma once

// The small questionnaire the import fuzz targets write into: three languages, three questions
// with a response each, a routing with a message.
#include "exchange/ImportFile.h"
#include "questionnaire/CaptionList.h"
#include "questionnaire/Questionnaire.h"

#include <cstdint>
#include <memory>

inline CQuestionnaire FuzzQuestionnaire() {
    CQuestionnaire q;
    for (quint32 lcid : {1033u, 1036u, 1031u})
        q.AddLanguage(std::make_unique<CLanguage>(lcid));
    q.SetDefaultLanguage(1033);
    for (int i = 1; i <= 3; ++i) {
        auto question = std::make_unique<CQuestion>(i, QStringLiteral("Q%1").arg(i));
        question->SetLocalisedLongCaption(1033, QStringLiteral("Question %1").arg(i));
        auto response = std::make_unique<CModalite>(1, QStringLiteral("1"));
        response->SetLocalisedLongCaption(1033, QStringLiteral("Yes"));
        question->AddModalite(std::move(response));
        q.AddQuestion(std::move(question));
    }
    auto routing = std::make_unique<CFiltre>(1, CFiltre::kKindWithMessage);
    routing->SetLocalisedMessage(1033, QStringLiteral("Yes"));
    q.AddFiltre(std::move(routing));
    return q;
}

// What an import fuzz target starts from: the questionnaire, a copy to compare it with after a
// refusal, its caption list, and the options the first byte of the input picks (1: only
// unchanged, 2: copy identical, 8: the languages given, not read from the header).
struct FuzzImportCase {
    explicit FuzzImportCase(uint8_t flags) {
        questionnaire::BuildCaptionList(q, captions, false);
        options.onlyUnchanged = flags & 1;
        options.copyIdentical = flags & 2;
        options.referenceLanguage = 1033;
        options.languages = {1033, 1036, 1031};
        if (flags & 8)
            options.explicitLanguages = {1033, 1031};
    }

    CQuestionnaire q = FuzzQuestionnaire();
    const CQuestionnaire before = q;
    questionnaire::CaptionList captions;
    exchange::ImportOptions options;
};
