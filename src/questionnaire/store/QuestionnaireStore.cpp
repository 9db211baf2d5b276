#include "questionnaire/store/QuestionnaireStore.h"

#include "questionnaire/Strings.h"
#include "questionnaire/store/PackageStore.h"
#include "questionnaire/store/QesStore.h"
#include "questionnaire/store/XmlStore.h"

#include "util/FileSystem.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryFile>

#include <algorithm>

namespace questionnaire {

void StoreRegistry::Register(const QString& ending, qint16 type, Factory factory) {
    std::erase_if(m_entries, [&ending](const Entry& e) {
        return e.ending.compare(ending, Qt::CaseInsensitive) == 0;
    });
    m_entries.push_back({ending, type, std::move(factory), {}});
    std::stable_sort(m_entries.begin(), m_entries.end(), [](const Entry& a, const Entry& b) {
        return a.ending.size() > b.ending.size();
    });
}

void StoreRegistry::RegisterPrefix(const QString& prefix, qint16 type, Factory factory) {
    m_prefixes.push_back({prefix, type, std::move(factory), {}, true});
}

void StoreRegistry::RegisterRefused(const QString& ending, qint16 type, const QString& reason) {
    Register(ending, type, {});
    for (Entry& entry : m_entries)
        if (entry.ending.compare(ending, Qt::CaseInsensitive) == 0)
            entry.refusal = reason;
}

void StoreRegistry::RegisterFallback(qint16 type, Factory factory) {
    m_fallback = {QString(), type, std::move(factory), {}};
}

const StoreRegistry::Entry* StoreRegistry::Find(const QString& path) const {
    for (const Entry& entry : m_prefixes)
        if (path.startsWith(entry.ending, Qt::CaseInsensitive))
            return &entry;
    for (const Entry& entry : m_entries)
        if (path.endsWith(entry.ending, Qt::CaseInsensitive))
            return &entry;
    return &m_fallback;
}

qint16 StoreRegistry::TypeOf(const QString& path) const {
    return Find(path)->type;
}

std::unique_ptr<QuestionnaireStore> StoreRegistry::Create(const QString& path,
                                                          QString& refusal) const {
    const Entry* entry = Find(path);
    if (entry->factory)
        return entry->factory();
    refusal = entry->refusal.isEmpty() ? Tr(strings::kNoStore).arg(path) : entry->refusal;
    return nullptr;
}

util::Outcome QuestionnaireStore::CopyForSaveAs(const QString& source, const QString& target) {
    const QString temporary = target + QStringLiteral(".copy");
    QFile::remove(temporary);
    if (QFile::copy(source, temporary) && util::ReplaceFile(temporary, target))
        return {};
    QFile::remove(temporary);
    return util::Outcome::Failure(QString());
}

util::Outcome QuestionnaireStore::SaveCopyAs(const QString& source, const QString& target,
                                             const CQuestionnaire& q,
                                             questionnaire::SaveParts parts,
                                             const StoreContext& context) {
    // A name of its own beside the target, which no other save and no file of the user's has.
    QTemporaryFile reserved(QFileInfo(target).absolutePath() + QStringLiteral("/.save-XXXXXX.tmp"));
    reserved.setAutoRemove(false);
    if (!reserved.open())
        return util::Outcome::Failure(QString()); // the caller's "cannot save" says it
    const QString building = reserved.fileName();
    reserved.close();
    const auto discard = [&building] {
        QFile::remove(building);
        QFile::remove(building + QStringLiteral("-journal")); // a database's, if one was left
    };
    util::Outcome outcome = CopyForSaveAs(source, building);
    if (outcome)
        outcome = SaveParts(building, q, parts, context);
    QString renameError;
    if (outcome && !util::ReplaceFile(building, target, &renameError))
        outcome = util::Outcome::Failure(renameError);
    if (!outcome)
        discard();
    return outcome;
}

StoreRegistry StandardStores() {
    StoreRegistry stores;
    // The dot is deliberately not part of the test: "surveyxml" is an XML file too.
    stores.Register(QStringLiteral("qex"), qint16(FileType::Exchange),
                    [] { return std::make_unique<PackageStore>(); });
    stores.Register(QStringLiteral("xml"), qint16(FileType::Xml),
                    [] { return std::make_unique<XmlStore>(); });
    stores.RegisterRefused(QStringLiteral("qew"), qint16(FileType::Campaign),
                           Tr(strings::kCampaignNotSupported));
    stores.RegisterFallback(qint16(FileType::Database),
                            [] { return std::make_unique<QesStore>(); });
    return stores;
}

FileType FileTypeOf(const QString& path) {
    static const StoreRegistry stores = StandardStores();
    return FileType(stores.TypeOf(path));
}

} // namespace questionnaire
