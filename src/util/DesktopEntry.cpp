#include "util/DesktopEntry.h"

#include "util/Process.h"

#include <QFile>
#include <QMimeDatabase>
#include <QStandardPaths>

namespace util {

namespace {

// How long xdg-mime may take to answer; it only reads a few small files.
constexpr int kQueryTimeoutMs = 10000;

struct DesktopEntryKeys {
    QString exec;
    QString name;
    QString icon;
    bool terminal = false;
};

// The escapes of string values: \s, \n, \t, \r and \\. Others are left for the Exec quoting.
QString UnescapeValue(const QString& value) {
    QString out;
    out.reserve(value.size());
    for (qsizetype i = 0; i < value.size(); ++i) {
        if (value[i] != QLatin1Char('\\') || i + 1 == value.size()) {
            out += value[i];
            continue;
        }
        const QChar next = value[++i];
        switch (next.unicode()) {
        case 's':
            out += QLatin1Char(' ');
            break;
        case 'n':
            out += QLatin1Char('\n');
            break;
        case 't':
            out += QLatin1Char('\t');
            break;
        case 'r':
            out += QLatin1Char('\r');
            break;
        case '\\':
            out += QLatin1Char('\\');
            break;
        default:
            out += QLatin1Char('\\');
            out += next;
        }
    }
    return out;
}

// The unlocalised keys of the [Desktop Entry] group; actions and other groups are not ours.
DesktopEntryKeys ReadKeys(const QString& desktopFile) {
    DesktopEntryKeys keys;
    QFile file(desktopFile);
    if (!file.open(QIODevice::ReadOnly))
        return keys;
    bool inEntry = false;
    for (const QByteArray& raw : file.readAll().split('\n')) {
        const QString line = QString::fromUtf8(raw).trimmed();
        if (line.startsWith(QLatin1Char('['))) {
            inEntry = line == QLatin1String("[Desktop Entry]");
            continue;
        }
        const qsizetype equals = line.indexOf(QLatin1Char('='));
        if (!inEntry || line.startsWith(QLatin1Char('#')) || equals < 0)
            continue;
        const QString key = line.left(equals).trimmed();
        const QString value = UnescapeValue(line.mid(equals + 1).trimmed());
        if (key == QLatin1String("Exec"))
            keys.exec = value;
        else if (key == QLatin1String("Name"))
            keys.name = value;
        else if (key == QLatin1String("Icon"))
            keys.icon = value;
        else if (key == QLatin1String("Terminal"))
            keys.terminal = value == QLatin1String("true");
    }
    return keys;
}

// Arguments are cut at blanks; inside double quotes a backslash escapes the next character.
QStringList SplitExec(const QString& exec) {
    QStringList arguments;
    QString current;
    bool inArgument = false;
    bool quoted = false;
    for (qsizetype i = 0; i < exec.size(); ++i) {
        const QChar c = exec[i];
        if (quoted) {
            if (c == QLatin1Char('"'))
                quoted = false;
            else
                current += c == QLatin1Char('\\') && i + 1 < exec.size() ? exec[++i] : c;
        } else if (c == QLatin1Char(' ') || c == QLatin1Char('\t')) {
            if (inArgument)
                arguments << current;
            current.clear();
            inArgument = false;
        } else {
            quoted = c == QLatin1Char('"');
            if (!quoted)
                current += c;
            inArgument = true;
        }
    }
    if (inArgument)
        arguments << current;
    return arguments;
}

// One argument with its field codes replaced; true when it took the file.
bool ExpandArgument(const QString& argument, const QString& path, const DesktopEntryKeys& keys,
                    const QString& desktopFile, QStringList& out) {
    if (argument == QLatin1String("%i")) {
        if (!keys.icon.isEmpty())
            out << QStringLiteral("--icon") << keys.icon;
        return false;
    }
    QString expanded;
    bool tookFile = false;
    bool hadCode = false;
    for (qsizetype i = 0; i < argument.size(); ++i) {
        if (argument[i] != QLatin1Char('%') || i + 1 == argument.size()) {
            expanded += argument[i];
            continue;
        }
        hadCode = true;
        const char16_t code = argument[++i].unicode();
        if (code == u'%') {
            expanded += QLatin1Char('%');
        } else if (code == u'f' || code == u'F' || code == u'u' || code == u'U') {
            expanded += path;
            tookFile = true;
        } else if (code == u'c') {
            expanded += keys.name;
        } else if (code == u'k') {
            expanded += desktopFile;
        } // the deprecated codes (%d, %D, %n, %N, %v, %m) and unknown ones expand to nothing
    }
    // An argument that was only a code expanding to nothing goes with it.
    if (!expanded.isEmpty() || !hadCode)
        out << expanded;
    return tookFile;
}

} // namespace

QStringList DesktopEntryCommand(const QString& desktopFile, const QString& path) {
    const DesktopEntryKeys keys = ReadKeys(desktopFile);
    // Without a terminal to run in, such a program would wait for input nobody can give.
    const QStringList arguments = keys.terminal ? QStringList() : SplitExec(keys.exec);
    if (arguments.isEmpty())
        return {};
    QStringList command;
    bool tookFile = false;
    for (const QString& argument : arguments)
        tookFile = ExpandArgument(argument, path, keys, desktopFile, command) || tookFile;
    if (!tookFile)
        command << path;
    return command;
}

QString FindDesktopEntry(const QString& desktopId) {
    if (desktopId.isEmpty() || desktopId.contains(QLatin1Char('/')))
        return {};
    QString candidate = desktopId;
    for (;;) {
        const QString found =
            QStandardPaths::locate(QStandardPaths::ApplicationsLocation, candidate);
        if (!found.isEmpty())
            return found;
        const qsizetype dash = candidate.indexOf(QLatin1Char('-'));
        if (dash < 0)
            return {};
        candidate[dash] = QLatin1Char('/');
    }
}

QStringList AssociatedOpenCommand(const QString& path) {
    const QString mimeType = QMimeDatabase().mimeTypeForFile(path).name();
    QString answer;
    if (RunProgram({QStringLiteral("xdg-mime"), QStringLiteral("query"), QStringLiteral("default"),
                    mimeType},
                   QString(), answer, kQueryTimeoutMs) != 0)
        return {};
    // One id is expected; some versions end it with the list separator of mimeapps.list.
    const QString id = answer.section(QLatin1Char('\n'), 0, 0).section(QLatin1Char(';'), 0, 0);
    const QString entry = FindDesktopEntry(id.trimmed());
    return entry.isEmpty() ? QStringList() : DesktopEntryCommand(entry, path);
}

} // namespace util
