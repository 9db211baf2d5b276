// Usage: stamp_tool prepare|clean QUESTIONNAIRE STAMP_NUMBER [CLOCK_AHEAD_SECONDS]
// "prepare" prints the working folder on standard output.
#include "exchange/WorkingFolder.h"

#include <QCoreApplication>
#include <QTextStream>

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    QTextStream err(stderr);
    if (args.size() < 4 || args.size() > 5) {
        err << "usage: stamp_tool prepare|clean QUESTIONNAIRE STAMP_NUMBER [CLOCK_AHEAD_SECONDS]\n";
        return 2;
    }
    bool numberOk = false;
    bool aheadOk = true;
    exchange::StampOwner owner;
    owner.stampNumber = args.at(3).toInt(&numberOk);
    const qint64 ahead = args.size() == 5 ? args.at(4).toLongLong(&aheadOk) : 0;
    if (!numberOk || !aheadOk) {
        err << "stamp_tool: the stamp number and the clock offset must be whole numbers\n";
        return 2;
    }
    owner.now = [ahead] { return QDateTime::currentDateTime().addSecs(ahead); };

    if (args.at(1) == QLatin1String("prepare")) {
        QTextStream(stdout) << exchange::PrepareWorkingFolder(owner, args.at(2)) << '\n';
        return 0;
    }
    if (args.at(1) == QLatin1String("clean")) {
        exchange::CleanWorkingFolder(owner, args.at(2));
        return 0;
    }
    err << "stamp_tool: unknown action " << args.at(1) << '\n';
    return 2;
}
