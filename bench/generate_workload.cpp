// Writes a synthetic questionnaire as .xml, .qes and .qex.
//   generate_workload small|large|stress OUTDIR
//   generate_workload --questions N --responses N --languages N [--big N] [--routings N]
//                     [--translated SHARE] [--length N] [--repeated SHARE] [--random-start N]
//                     [--no-notes] OUTDIR
#include "Workload.h"

#include "app/AppContext.h"
#include "questionnaire/formats/QesDatabase.h"
#include "questionnaire/formats/XmlFile.h"

#include <QCoreApplication>

#include <cstdio>

namespace {

bool Parse(const QStringList& args, bench::WorkloadSpec& spec, QString& outDir) {
    if (args.size() == 3 && !args[1].startsWith(QLatin1String("--"))) {
        outDir = args[2];
        return bench::NamedWorkload(args[1], spec);
    }
    for (qsizetype i = 1; i + 1 < args.size(); i += 2) {
        const QString& key = args[i];
        const QString& value = args[i + 1];
        if (key == QLatin1String("--no-notes")) {
            spec.instructionsAndComments = false;
            --i;
        } else if (key == QLatin1String("--questions"))
            spec.questions = value.toInt();
        else if (key == QLatin1String("--responses"))
            spec.responses = value.toInt();
        else if (key == QLatin1String("--languages"))
            spec.languages = value.toInt();
        else if (key == QLatin1String("--big"))
            spec.bigQuestionResponses = value.toInt();
        else if (key == QLatin1String("--routings"))
            spec.routings = value.toInt();
        else if (key == QLatin1String("--translated"))
            spec.translatedShare = value.toDouble();
        else if (key == QLatin1String("--length"))
            spec.meanCaptionLength = value.toInt();
        else if (key == QLatin1String("--repeated"))
            spec.repeatedShare = value.toDouble();
        else if (key == QLatin1String("--random-start"))
            spec.randomStart = value.toUInt();
        else
            return false;
    }
    outDir = args.last();
    return spec.languages > 0 && spec.questions >= 0;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    bench::WorkloadSpec spec;
    QString outDir;
    if (!Parse(QCoreApplication::arguments(), spec, outDir)) {
        std::fprintf(stderr, "usage: generate_workload small|large|stress OUTDIR | --questions N "
                             "--responses N --languages N ... OUTDIR\n");
        return 64;
    }
    CQuestionnaire q = bench::MakeQuestionnaire(spec);
    const QString base = outDir + QLatin1Char('/') + spec.name;
    util::Outcome written = questionnaire::WriteXmlFile(base + QStringLiteral(".xml"), q);
    if (written)
        written = questionnaire::WriteQesFile(base + QStringLiteral(".qes"), q,
                                              app::AppContext::ProgramVersion());
    if (written && !q.SaveToExchangeFormat(base + QStringLiteral(".qex"), QString(), -1))
        written = util::Outcome::Failure(q.GetLastError());
    if (!written) {
        std::fprintf(stderr, "%s\n", qPrintable(written.Reason()));
        return 1;
    }
    std::printf("wrote %s.xml, .qes and .qex\n", qPrintable(base));
    return 0;
}
