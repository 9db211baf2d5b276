// Bytes of an exchange package. Whether it is read or refused, nothing may appear or change
// outside the working folder, a refusal must say why, and what is read must save and read back
// to the same questionnaire.
#include "questionnaire/Questionnaire.h"
#include "util/AnsiCodePage.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>

namespace {

// One folder for the whole run: in.qex, work/ (the working folder) and outside/, a sibling
// holding one file that must stay as it is.
class Playground {
public:
    Playground() {
        util::AnsiCodePage::SetCurrent(1252);
        QDir(m_base.path()).mkdir(QStringLiteral("outside"));
        QFile sentinel(Sentinel());
        if (!sentinel.open(QIODevice::WriteOnly) || sentinel.write("mine") != 4)
            std::abort();
    }

    QString Path(const QString& name) const { return m_base.filePath(name); }
    QString Work() const { return Path(QStringLiteral("work")) + QLatin1Char('/'); }
    QString Outside() const { return Path(QStringLiteral("outside")); }
    QString Sentinel() const { return Outside() + QStringLiteral("/sentinel.txt"); }

    // A fresh working folder with links to the outside under stamp names, which unpacking
    // keeps: a package that could write through them would escape.
    void Reset() const {
        for (const char* name : {"work", "again"})
            QDir(Path(QString::fromLatin1(name))).removeRecursively();
        QFile::remove(Path(QStringLiteral("again.qex")));
        if (!QDir().mkdir(Work()) || !QFile::link(Outside(), Work() + QStringLiteral("m.stp")) ||
            !QFile::link(Sentinel(), Work() + QStringLiteral("run.stp")))
            std::abort();
    }

    bool OutsideUntouched() const {
        QDirIterator it(m_base.path(),
                        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
        while (it.hasNext()) {
            const QString name = it.next().section(QLatin1Char('/'), -1);
            if (name != QLatin1String("work") && name != QLatin1String("outside") &&
                name != QLatin1String("in.qex") && name != QLatin1String("again") &&
                name != QLatin1String("again.qex"))
                return false;
        }
        const QStringList outside = QDir(Outside()).entryList(QDir::AllEntries | QDir::Hidden |
                                                              QDir::System | QDir::NoDotAndDotDot);
        QFile sentinel(Sentinel());
        return outside == QStringList{QStringLiteral("sentinel.txt")} &&
               sentinel.open(QIODevice::ReadOnly) && sentinel.readAll() == "mine";
    }

private:
    QTemporaryDir m_base;
};

// Saves what was read and reads the package back into a second folder.
bool SavesAndReadsBack(CQuestionnaire& q, const Playground& ground) {
    const QString again = ground.Path(QStringLiteral("again.qex"));
    if (!q.SaveToExchangeFormat(again, QString(), -1) ||
        !QDir().mkdir(ground.Path(QStringLiteral("again"))))
        return false;
    CQuestionnaire reread;
    return reread.ReadFromExchangeFormat(again, ground.Path(QStringLiteral("again"))) &&
           reread == q;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const Playground ground;
    ground.Reset();
    const QString qex = ground.Path(QStringLiteral("in.qex"));
    QFile file(qex);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate) ||
        file.write(reinterpret_cast<const char*>(data), qint64(size)) != qint64(size))
        std::abort();
    file.close();
    CQuestionnaire q;
    const bool read = q.ReadFromExchangeFormat(qex, ground.Work());
    if (!read && q.GetLastError().isEmpty())
        std::abort(); // a refusal must say why
    if (!ground.OutsideUntouched())
        std::abort();
    if (read && (q.GetExchangeFolder() != ground.Work() || !SavesAndReadsBack(q, ground)))
        std::abort();
    if (!ground.OutsideUntouched())
        std::abort();
    return 0;
}
