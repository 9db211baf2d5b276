#pragma once

#include "questionnaire/Questionnaire.h"

#include <QString>

namespace bench {

// The shape of a synthetic questionnaire for measurements.
struct WorkloadSpec {
    QString name = QStringLiteral("custom");
    int questions = 50;
    int responses = 200;        // in all, spread over the choice questions
    int bigQuestionResponses = 0; // one extra question with this many responses
    int languages = 5;
    int routings = 20;          // of kind 2
    bool instructionsAndComments = true;
    double translatedShare = 0.5; // of the target cells
    int meanCaptionLength = 60;
    double repeatedShare = 0.35;  // of the source texts
    unsigned randomStart = 1;
};

// "small", "large" or "stress"; false for another name.
bool NamedWorkload(const QString& name, WorkloadSpec& spec);

CQuestionnaire MakeQuestionnaire(const WorkloadSpec& spec);

// The locale ids the workloads draw their languages from, the main one first.
QList<qint32> WorkloadLanguages(int count);

} // namespace bench
