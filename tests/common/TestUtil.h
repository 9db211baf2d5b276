#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace testutil {

// Folder of the hand-made files used by golden tests.
QString DataPath(const QString& name);
QString SourcePath(const QString& relative);

QByteArray ReadAll(const QString& path);
bool WriteAll(const QString& path, const QByteArray& bytes);

// UTF-16LE bytes of a text, optionally preceded by the mark FF FE.
QByteArray Utf16Le(const QString& text, bool withMark = true);

// Empty when the XLIFF file validates against the published schema of its version ("1.2"
// strict or "2.0"); xmllint's account otherwise.
QString ValidateXliff(const QString& path, const QString& version);
// Empty when translate-toolkit, a second client, reads the TMX file; its account otherwise.
// `units` receives each unit it found as one JSON object of its variants by language tag.
QString ReadTmxWithToolkit(const QString& path, QStringList* units = nullptr);
// Has translate-toolkit write a memory of three units (one with a single language) to `path`;
// empty when it did, its account otherwise.
QString WriteTmxWithToolkit(const QString& path);

// Root may read and write anything: while this lives, root runs as the unprivileged user
// "nobody" (the saved id stays root's so that it can come back). Any other user stays as it is.
class Unprivileged {
public:
    Unprivileged();
    ~Unprivileged();
    Unprivileged(const Unprivileged&) = delete;
    Unprivileged& operator=(const Unprivileged&) = delete;
    // False when root could not become "nobody".
    bool Ok() const { return m_ok; }

private:
    bool m_ok = true;
    bool m_dropped = false;
};

// Runs statements on a database through a connection of the test's own; false when one fails.
bool Sql(const QString& database, const QStringList& statements);
// Every row of a table as text, for before/after comparisons.
QStringList Dump(const QString& database, const QString& table);

} // namespace testutil

#include <ostream>

// Readable QString values in test failure messages.
inline void PrintTo(const QString& text, std::ostream* os) {
    *os << '"' << text.toStdString() << '"';
}
