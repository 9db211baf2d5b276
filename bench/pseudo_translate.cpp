// Plays the translator: fills every empty cell of one language column of an export file with a
// visible pseudo-translation of the source column, and writes the file back as a spreadsheet
// program saves UTF-16 text.
//   pseudo_translate FILE LCID
#include "exchange/ExportFile.h"
#include "exchange/RowCutter.h"
#include "util/TextFile.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QSaveFile>

#include <cstdio>

namespace {

// Accents the vowels so that the text reads as translated; escape sequences stay as they are.
QString Pseudo(const QString& source, const QString& tag) {
    static const QString plain = QStringLiteral("aeiouAEIOU");
    static const QString accented = QStringLiteral("àéîõüÀÉÎÕÜ");
    QString text = source;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (i > 0 && text[i - 1] == QLatin1Char('\\'))
            continue;
        const qsizetype vowel = plain.indexOf(text[i]);
        if (vowel >= 0)
            text[i] = accented[vowel];
    }
    return QStringLiteral("[%1] ").arg(tag) + text;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    const QStringList args = QCoreApplication::arguments();
    if (args.size() != 3) {
        std::fprintf(stderr, "usage: pseudo_translate FILE LCID\n");
        return 64;
    }
    QString text;
    if (!util::LoadTextFile(args[1], text, false)) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(args[1]));
        return 1;
    }
    exchange::RowCutter cutter(text);
    QList<QStringList> rows;
    std::vector<exchange::CutCell> cells;
    while (cutter.Next(cells))
        rows.append(exchange::RowCutter::Strings(cells));
    const QString prefix = args[2] + QLatin1Char('(');
    const qsizetype column = rows.isEmpty()
                                 ? -1
                                 : rows[0].indexOf(QRegularExpression(
                                       QRegularExpression::escape(prefix) + QStringLiteral(".*")));
    if (column < 3) {
        std::fprintf(stderr, "no target column %s(...) after the source column\n",
                     qPrintable(args[2]));
        return 1;
    }
    const QString tag = rows[0][column].mid(prefix.size()).chopped(1);
    int filled = 0;
    QString out(QChar(0xFEFF));
    for (qsizetype r = 0; r < rows.size(); ++r) {
        QStringList& row = rows[r];
        if (r > 0 && row.size() > 2) {
            while (row.size() <= column)
                row.append(QString());
            if (row[column].isEmpty() && !row[2].isEmpty()) {
                row[column] = Pseudo(row[2], tag);
                ++filled;
            }
        }
        for (qsizetype c = 0; c < row.size(); ++c) {
            if (c > 0)
                out += QLatin1Char('\t');
            exchange::AppendCell(out, row[c]);
        }
        out += QStringLiteral("\r\n");
    }
    QSaveFile file(args[1]);
    if (!file.open(QIODevice::WriteOnly) || !util::WriteUtf16Le(file, out) || !file.commit()) {
        std::fprintf(stderr, "cannot write %s\n", qPrintable(args[1]));
        return 1;
    }
    std::printf("   filled %d empty %s cells with a pseudo-translation\n", filled, qPrintable(tag));
    return 0;
}
