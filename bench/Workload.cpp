#include "Workload.h"

#include "questionnaire/CaptionAccess.h"
#include "questionnaire/CaptionList.h"
#include "util/LocaleTable.h"

#include <QElapsedTimer>
#include <QFile>

#include <algorithm>
#include <cstdio>
#include <random>

#include <malloc.h>

namespace bench {

namespace {

const char* const kWords[] = {
    "how",    "satisfied", "are",     "you",      "with",     "our",       "service", "please",
    "rate",   "the",       "quality", "of",       "products", "in",        "last",    "month",
    "did",    "visit",     "store",   "website",  "would",    "recommend", "friend",  "colleague",
    "very",   "fairly",    "not",     "at",       "all",      "don't",     "know",    "price",
    "value",  "delivery",  "staff",   "friendly", "helpful",  "waiting",   "time",    "reason",
    "answer", "below",     "café",    "résumé",   "naïve",    "\"best\"",  "other,",  "specify",
};

class Texts {
public:
    Texts(const WorkloadSpec& spec) : m_spec(spec), m_random(spec.randomStart) {}

    QString Source() {
        if (!m_pool.isEmpty() && Chance(m_spec.repeatedShare))
            return m_pool[m_random() % m_pool.size()];
        QString text = Words(m_spec.meanCaptionLength);
        m_pool.append(text);
        return text;
    }
    QString Target(const QString& source, qint32 lcid) {
        return QStringLiteral("[%1] ").arg(lcid) + source.left(source.size() * 9 / 10);
    }
    bool Chance(double share) { return std::uniform_real_distribution<>(0, 1)(m_random) < share; }

private:
    QString Words(int mean) {
        const int length = int(std::uniform_int_distribution<>(mean / 2, mean * 3 / 2)(m_random));
        QString text;
        while (text.size() < length) {
            if (!text.isEmpty())
                text += (m_random() % 40 == 0) ? QStringLiteral("\n") : QStringLiteral(" ");
            text += QString::fromUtf8(kWords[m_random() % std::size(kWords)]);
        }
        if (m_random() % 30 == 0)
            text += QStringLiteral("\tC:\\path");
        return text;
    }

    const WorkloadSpec& m_spec;
    std::mt19937 m_random;
    QStringList m_pool;
};

void AddQuestion(CQuestionnaire& q, int id, int responses) {
    auto question = std::make_unique<CQuestion>(id, QStringLiteral("Q%1").arg(id),
                                                responses > 0 ? QuestionType::SingleChoice
                                                              : QuestionType::OpenText);
    for (int r = 1; r <= responses; ++r)
        question->AddModalite(std::make_unique<CModalite>(r, QString::number(r)));
    q.AddQuestion(std::move(question));
}

} // namespace

QList<qint32> WorkloadLanguages(int count) {
    QList<qint32> lcids = {1033, 1036, 1031, 3082, 1040, 1043, 2070, 1046, 1053, 1030};
    for (const util::LocaleInfo& info : util::LocaleTable::Instance().All()) {
        if (lcids.size() >= count)
            break;
        if (!info.IsNeutral() && info.lcid <= 0xFFFF && !lcids.contains(info.lcid))
            lcids.append(info.lcid);
    }
    return lcids.mid(0, count);
}

bool NamedWorkload(const QString& name, WorkloadSpec& spec) {
    spec = WorkloadSpec();
    spec.name = name;
    if (name == QLatin1String("small"))
        return true;
    if (name != QLatin1String("large") && name != QLatin1String("stress"))
        return false;
    spec.questions = 1000;
    spec.responses = 6000;
    spec.routings = 500;
    spec.languages = 40;
    spec.dictionaryEntries = 1000000;
    if (name == QLatin1String("stress")) {
        spec.bigQuestionResponses = 15000;
        spec.languages = 120;
    }
    return true;
}

CQuestionnaire MakeQuestionnaire(const WorkloadSpec& spec) {
    CQuestionnaire q;
    q.SetName(QStringLiteral("Workload %1").arg(spec.name));
    q.SetAllowingInstructionAndComment(spec.instructionsAndComments);
    const QList<qint32> languages = WorkloadLanguages(spec.languages);
    for (qint32 lcid : languages)
        q.AddLanguage(std::make_unique<CLanguage>(quint32(lcid)));
    q.SetDefaultLanguage(languages.first());
    // Two questions in three offer responses, the total spread evenly over them.
    const int choiceQuestions = std::max(1, spec.questions - spec.questions / 3);
    int choiceSeen = 0;
    for (int i = 0; i < spec.questions; ++i) {
        int responses = 0;
        if (i % 3 != 2) {
            responses = spec.responses / choiceQuestions +
                        (choiceSeen < spec.responses % choiceQuestions ? 1 : 0);
            ++choiceSeen;
        }
        AddQuestion(q, i + 1, responses);
    }
    if (spec.bigQuestionResponses > 0)
        AddQuestion(q, spec.questions + 1, spec.bigQuestionResponses);
    for (int i = 1; i <= spec.routings; ++i)
        q.AddFiltre(std::make_unique<CFiltre>(i, CFiltre::kKindWithMessage));

    Texts texts(spec);
    questionnaire::CaptionList list;
    questionnaire::BuildCaptionList(q, list, false);
    for (qsizetype k = 0; k < list.size(); ++k) {
        const qint32 qid = list.questionIds[k];
        const qint32 rid = list.responseIds[k];
        if (qid == questionnaire::kSystemMessageMarker)
            continue;
        const QString source = texts.Source();
        questionnaire::WriteCaption(q, qid, rid, languages.first(), source);
        for (qsizetype l = 1; l < languages.size(); ++l)
            if (texts.Chance(spec.translatedShare))
                questionnaire::WriteCaption(q, qid, rid, languages[l],
                                            texts.Target(source, languages[l]));
    }
    return q;
}

QList<qint32> DictionaryLanguages() {
    return {1033, 1036, 1031, 3082};
}

CDictionary MakeDictionary(int entries, QStringList* lookups) {
    const QList<qint32> languages = DictionaryLanguages();
    std::mt19937 random(7);
    CDictionary dictionary;
    for (int i = 0; i < entries; ++i) {
        CDicEntry::Texts texts;
        const QString text =
            QStringLiteral("Caption %1 of the survey, %2 answers").arg(i).arg(random() % 1000);
        for (qint32 lcid : languages)
            texts[lcid] = QStringLiteral("[%1] ").arg(lcid) + text;
        if (lookups && i % 1000 == 0)
            lookups->append(texts[languages.first()]);
        dictionary.AddEntry(texts);
    }
    return dictionary;
}

int ParseOptions(const QStringList& arguments, const char* usage, const char* measures,
                 Options& options, bool acceptsOnly) {
    const QStringList known =
        QString::fromLatin1(measures).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    QString name = QStringLiteral("large");
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& option = arguments[i];
        const bool hasValue = i + 1 < arguments.size();
        if (option == QLatin1String("--help")) {
            std::printf("%smeasures: %s\n", usage, measures);
            return 0;
        }
        if (option == QLatin1String("--reuse")) {
            options.reuse = true;
        } else if (option == QLatin1String("--workload") && hasValue) {
            name = arguments[++i];
        } else if (option == QLatin1String("--dir") && hasValue) {
            options.dir = arguments[++i];
        } else if (acceptsOnly && option == QLatin1String("--only") && hasValue) {
            options.only = arguments[++i].split(QLatin1Char(','));
            for (const QString& measure : std::as_const(options.only))
                if (!known.contains(measure)) {
                    std::fprintf(stderr, "unknown measure %s (%s)\n", qPrintable(measure),
                                 measures);
                    return 64;
                }
        } else if (option == QLatin1String("--repeat") && hasValue) {
            bool ok = false;
            options.repeat = arguments[++i].toInt(&ok);
            if (!ok || options.repeat < 1) {
                std::fprintf(stderr, "--repeat wants a whole number of at least 1\n%s", usage);
                return 64;
            }
        } else {
            std::fprintf(stderr, "unknown option or missing value: %s\n%s", qPrintable(option),
                         usage);
            return 64;
        }
    }
    if (!NamedWorkload(name, options.spec)) {
        std::fprintf(stderr, "unknown workload (small, large, stress)\n");
        return 64;
    }
    return -1;
}

qint64 StatusKb(const char* field) {
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith(field))
            return line.mid(qstrlen(field)).trimmed().split(' ').value(0).toLongLong();
    return 0;
}

void ResetPeak(bool trim) {
    if (trim)
        malloc_trim(0);
    QFile clear(QStringLiteral("/proc/self/clear_refs"));
    if (clear.open(QIODevice::WriteOnly))
        clear.write("5");
}

qint64 HeapKb() {
    const struct mallinfo2 info = mallinfo2();
    return qint64((info.uordblks + info.hblkhd) / 1024);
}

double Median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
}

double Seconds(const std::function<void()>& step) {
    QElapsedTimer timer;
    timer.start();
    step();
    return timer.nsecsElapsed() / 1e9;
}

} // namespace bench
