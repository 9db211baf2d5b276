#include "BuildInfo.h"
#include "app/CaptionListing.h"
#include "questionnaire/Questionnaire.h"
#include "questionnaire/XmlFile.h"

#include <QCoreApplication>
#include <QTextStream>

namespace {
void PrintUsage(QTextStream& out) {
    out << "Usage: translator FILE OPTION...\n"
           "  translator survey.xml listcaptions   print every translatable caption\n"
           "  translator --help | --version\n";
}
} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setOrganizationName(QString::fromLatin1(buildinfo::kCompany));
    QCoreApplication::setApplicationName(QString::fromLatin1(buildinfo::kProduct));
    QTextStream out(stdout);
    QTextStream err(stderr);
    const QStringList args = QCoreApplication::arguments();
    if (args.size() == 2 && args[1] == QLatin1String("--help")) {
        PrintUsage(out);
        return 0;
    }
    if (args.size() == 2 && args[1] == QLatin1String("--version")) {
        out << buildinfo::kProduct << ' ' << buildinfo::kVersion << '\n';
        return 0;
    }
    if (args.size() >= 3 && args[2].compare(QLatin1String("listcaptions"), Qt::CaseInsensitive) == 0) {
        CQuestionnaire q;
        if (!questionnaire::ReadXmlFile(args[1], q)) {
            err << q.m_lastError << '\n';
            return 1;
        }
        q.PrepareLinks();
        app::PrintCaptionList(q, out);
        return 0;
    }
    PrintUsage(err);
    return 2;
}
