#pragma once

#include "dictionary/Dictionary.h"
#include "questionnaire/Questionnaire.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

namespace bench {

// The shape of a synthetic questionnaire for measurements.
struct WorkloadSpec {
    QString name = QStringLiteral("custom");
    int questions = 50;
    int responses = 200;          // in all, spread over the choice questions
    int bigQuestionResponses = 0; // one extra question with this many responses
    int languages = 5;
    int routings = 20; // of kind 2
    bool instructionsAndComments = true;
    double translatedShare = 0.5; // of the target cells
    int meanCaptionLength = 60;
    double repeatedShare = 0.35; // of the source texts
    unsigned randomStart = 1;
    int dictionaryEntries = 2000; // the translation memory measured beside it
};

// "small", "large" or "stress"; false for another name.
bool NamedWorkload(const QString& name, WorkloadSpec& spec);

CQuestionnaire MakeQuestionnaire(const WorkloadSpec& spec);

// The locale ids the workloads draw their languages from, the main one first.
QList<qint32> WorkloadLanguages(int count);

// The languages of the benchmarks' translation memory, English first.
QList<qint32> DictionaryLanguages();

// A translation memory of `entries` captions, each in every DictionaryLanguages(), the same for
// the same count. `lookups` receives the English text of every 1000th entry.
CDictionary MakeDictionary(int entries, QStringList* lookups = nullptr);

// The options a workload benchmark takes.
struct Options {
    WorkloadSpec spec;  // --workload small|large|stress, "large" unless given
    QString dir;        // --dir DIR; empty for a temporary folder
    bool reuse = false; // --reuse: keep the files a previous run left in `dir`
    int repeat = 1;     // --repeat N
    QStringList only;   // --only MEASURE,...: where the benchmark offers it; empty for all
};

// Reads the arguments after the program's name. --help prints `usage` and the line
// "measures: `measures`" that check_bench.sh reads. Returns -1 to go on, else the exit code: 0
// after --help, 64 for an option refused (said on stderr with the usage).
// `acceptsOnly` lets --only pick measures among `measures` (space-separated).
int ParseOptions(const QStringList& arguments, const char* usage, const char* measures,
                 Options& options, bool acceptsOnly = false);

// A field of /proc/self/status such as "VmRSS:", in kB; 0 where it cannot be read.
qint64 StatusKb(const char* field);

// Starts a new high-water mark of resident memory, so each step reports its own peak. `trim`
// first gives back what the allocator keeps from earlier work, which a step would otherwise reuse
// unseen.
void ResetPeak(bool trim);

// The bytes the allocator has handed out and not had back, in kB: unlike resident memory, it does
// not hide what a step allocates in pages an earlier step freed but kept.
qint64 HeapKb();

double Median(std::vector<double> values);

double Seconds(const std::function<void()>& step);

} // namespace bench
