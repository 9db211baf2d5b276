#include "app/BatchRunner.h"

#include "app/AppContext.h"
#include "app/CaptionListing.h"
#include "app/QuestionnaireDocument.h"
#include "app/Strings.h"
#include "dictionary/ConflictList.h"
#include "dictionary/Dictionary.h"
#include "dictionary/DictionaryPasses.h"
#include "dictionary/Strings.h"
#include "dictionary/TmxFile.h"
#include "exchange/ExportFile.h"
#include "exchange/ImportFile.h"
#include "exchange/XliffFile.h"
#include "questionnaire/CaptionTable.h"
#include "questionnaire/LanguageList.h"
#include "questionnaire/StaticTools.h"
#include "util/Messages.h"
#include "util/SqlConnection.h"

#include <QFileInfo>
#include <QTextStream>

namespace app {

namespace {

constexpr qint32 kCannotLoad = -1;
constexpr qint32 kCannotSave = -2;
constexpr qint32 kExportDone = -20;
constexpr qint32 kCannotSaveDictionary = -3;

using Operation = BatchOptions::Operation;

bool SetFlag(BatchOptions& o, const QString& argument) {
    const struct {
        const char* name;
        bool BatchOptions::*flag;
    } flags[] = {
        {"importunchanged", &BatchOptions::importUnchanged},
        {"copyidentical", &BatchOptions::copyIdentical},
        {"excludenonvisible", &BatchOptions::excludeNonVisible},
        {"excluderouting", &BatchOptions::excludeRouting},
        {"excludemessage", &BatchOptions::excludeMessage},
        {"excludetranslated", &BatchOptions::excludeTranslated},
        {"excludeduplicates", &BatchOptions::excludeDuplicates},
    };
    for (const auto& f : flags) {
        if (argument.compare(QLatin1String(f.name), Qt::CaseInsensitive) == 0) {
            o.*(f.flag) = true;
            return true;
        }
    }
    const struct {
        const char* name;
        Operation operation;
    } operations[] = {{"addlanguage", Operation::AddLanguage},
                      {"listcaptions", Operation::ListCaptions},
                      {"autotranslate", Operation::AutoTranslate},
                      {"senddictionary", Operation::SendDictionary}};
    for (const auto& op : operations) {
        if (argument.compare(QLatin1String(op.name), Qt::CaseInsensitive) == 0) {
            o.operation = op.operation;
            return true;
        }
    }
    return false;
}

void SetKey(BatchOptions& o, const QString& key, const QString& value) {
    auto is = [&key](const char* name) {
        return key.compare(QLatin1String(name), Qt::CaseInsensitive) == 0;
    };
    if (is("export") || is("translate") || is("saveas")) {
        o.operation = is("export")      ? Operation::Export
                      : is("translate") ? Operation::Translate
                                        : Operation::SaveAs;
        o.path = value;
    } else if (is("languages")) {
        o.languages = value;
    } else if (is("reference")) {
        o.reference = value;
    } else if (is("headers")) {
        o.headers = value;
    } else if (is("dictionary")) {
        o.dictionary = value;
    } else if (is("xliff")) {
        o.xliff = value;
    }
}

qint32 Reference(const QString& text, qint32 fallback) {
    if (text.isEmpty())
        return fallback;
    qint32 lcid = 0;
    if (CStaticTools::EstLong(text, lcid))
        return lcid;
    for (const auto& language : CLanguage::WindowsLanguages())
        if (language->m_shortName.compare(text, Qt::CaseInsensitive) == 0)
            return language->m_id;
    return fallback;
}

class Batch {
public:
    Batch(AppContext& app, const BatchOptions& o, util::Messages& messages, QTextStream& out,
          util::Progress* progress)
        : m_app(app), m_o(o), m_messages(messages), m_out(out), m_progress(progress),
          m_document(app, messages, progress) {}

    qint32 Export();
    qint32 Translate();
    qint32 AddLanguages();
    qint32 ListCaptions();
    qint32 AutoTranslate();
    qint32 SendDictionary();
    qint32 SaveAs();
    // FILE is a dictionary: its entries go to a TMX file, or a TMX file's units come into it.
    bool OnDictionary() const {
        return m_o.file.endsWith(QLatin1String(".dic"), Qt::CaseInsensitive) &&
               dictionary::IsTmxPath(m_o.path);
    }
    qint32 ExportMemory();
    qint32 ImportMemory();

private:
    // Standard error tells a script why; nothing waits for an answer.
    bool Load() {
        if (m_document.OpenSilently(m_o.file))
            return true;
        m_messages.Error(m_document.LastError());
        return false;
    }
    qint32 SaveFailed() {
        m_messages.Error(m_document.LastError());
        return kCannotSave;
    }
    questionnaire::CaptionTable& Captions() { return m_document.Captions(); }

    QString DictionaryPath() const {
        return m_o.dictionary.isEmpty() ? m_app.dictionaryPath : m_o.dictionary;
    }

    AppContext& m_app;
    const BatchOptions& m_o;
    util::Messages& m_messages;
    QTextStream& m_out;
    util::Progress* m_progress;
    // Its end runs the housekeeping of the package's working folder.
    QuestionnaireDocument m_document;
};

qint32 Batch::Export() {
    if (OnDictionary())
        return ExportMemory();
    exchange::XliffVersion xliff = exchange::XliffVersion::V12;
    if (!m_o.xliff.isEmpty() && !exchange::ParseXliffVersion(m_o.xliff, xliff)) {
        m_messages.Error(Tr(strings::kUnknownXliffVersion).arg(m_o.xliff));
        return kExportDone;
    }
    if (!Load())
        return kCannotLoad;
    const CQuestionnaire& q = *m_document.Questionnaire();
    exchange::ExportOptions options;
    options.excludeTranslated = m_o.excludeTranslated;
    options.excludeDuplicates = m_o.excludeDuplicates;
    options.excludeNonVisible = m_o.excludeNonVisible;
    options.kinds.excludeSystemMessages = m_o.excludeMessage;
    options.kinds.excludeRoutings = m_o.excludeRouting;
    options.languages = m_o.languages.isEmpty() ? Captions().Languages()
                                                : questionnaire::ParseLanguageList(m_o.languages);
    options.headers = m_o.headers;
    if (ExportWouldReplaceSource(exchange::IsXliffPath(m_o.path)
                                     ? exchange::XliffExportPaths(m_o.path, q, options)
                                     : QStringList{m_o.path},
                                 m_o.file, m_messages))
        return kExportDone;
    exchange::ExportReport report;
    if (exchange::IsXliffPath(m_o.path)) {
        // Unlike the tab-separated export, the XLIFF export tells whether it wrote its files.
        const bool written = exchange::ExportXliff(m_o.path, q, options, xliff, Captions().Rows(),
                                                   m_messages, &report, m_progress);
        if (written)
            m_out << "exported " << report.rows << " units to "
                  << exchange::XliffExportPaths(m_o.path, q, options).join(QStringLiteral(", "))
                  << '\n';
        return written ? 0 : kExportDone;
    }
    const bool ok = exchange::ExportStringsForTranslation(m_o.path, q, options, Captions().Rows(),
                                                          m_messages, &report, m_progress);
    if (report.written)
        m_out << "exported " << report.rows << " rows to " << m_o.path << '\n';
    // The export reports failure in every case: scripts judge success by the file.
    return ok ? 0 : kExportDone;
}

qint32 Batch::Translate() {
    if (OnDictionary())
        return ImportMemory();
    if (!Load())
        return kCannotLoad;
    CQuestionnaire& q = *m_document.Questionnaire();
    exchange::ImportOptions options;
    options.onlyUnchanged = m_o.importUnchanged;
    options.copyIdentical = m_o.copyIdentical;
    options.referenceLanguage = Reference(m_o.reference, q.GetDefaultLanguage());
    for (int i = 0; i < q.GetLanguageCount(); ++i)
        options.languages.append(q.GetLanguage(i).m_id);
    options.headerNames = m_o.headers;
    options.explicitLanguages = questionnaire::ParseLanguageList(m_o.languages);
    exchange::ImportReport report;
    // The import is silent in batch work: its result code says what happened.
    util::NoMessages silent;
    const qint32 result =
        exchange::IsXliffFile(m_o.path)
            ? exchange::ImportXliff(q, m_o.path, options, Captions().Rows(), silent, &report)
            : exchange::ImportTranslatedFile(q, m_o.path, options, Captions().Rows(), silent,
                                             &report, m_progress);
    if (result >= 0)
        m_out << "imported " << result << " captions, " << report.rejectedRows
              << " rows changed since the export"
              << (report.unusedStringsPath.isEmpty()
                      ? QString()
                      : QStringLiteral(" (written to %1)").arg(report.unusedStringsPath))
              << '\n';
    if (result > 0)
        Captions().QuestionnaireChanged();
    if (result > 0 && !m_document.SaveBatch())
        return SaveFailed();
    return result;
}

qint32 Batch::AddLanguages() {
    const QList<qint32> lcids = questionnaire::ParseLanguageList(m_o.languages);
    if (!Load())
        return kCannotLoad;
    const int added = questionnaire::AddLanguages(*m_document.Questionnaire(), lcids);
    m_out << "added " << added << " languages\n";
    if (added > 0)
        Captions().QuestionnaireChanged();
    if (added > 0 && !m_document.SaveBatch())
        return SaveFailed();
    return 0;
}

qint32 Batch::ListCaptions() {
    if (!Load())
        return kCannotLoad;
    PrintCaptionList(Captions(), m_out);
    return 0;
}

// Rows that would need the conflict dialog are left out and counted: no one is there to choose.
class LeaveOutConflicts : public ConflictChooser {
public:
    qint32 Choose(const ConflictList&) override {
        ++leftOut;
        return ConflictList::kDoNotAdd;
    }
    int leftOut = 0;
};

qint32 Batch::AutoTranslate() {
    CDictionary dictionary;
    // A missing file is an empty dictionary.
    dictionary.Load(DictionaryPath(), m_messages, m_progress);
    if (!Load())
        return kCannotLoad;
    const int count = dictionary::AutoTranslate(Captions(), dictionary, m_progress);
    m_out << util::WithCount(dictionary::Tr(dictionary::strings::kCaptionsTranslated), count)
          << '\n';
    if (count > 0 && !m_document.SaveBatch())
        return SaveFailed();
    return count;
}

qint32 Batch::SendDictionary() {
    CDictionary dictionary;
    const QString path = DictionaryPath();
    dictionary.Load(path, m_messages, m_progress);
    if (!Load())
        return kCannotLoad;
    LeaveOutConflicts chooser;
    int added = 0;
    dictionary::SendToDictionary(Captions(), 0, Captions().RowCount() - 1, dictionary, chooser,
                                 added, m_progress);
    if (chooser.leftOut > 0)
        m_messages.Warn(Tr(strings::kRowsLeftOut).arg(chooser.leftOut));
    if (dictionary.IsModified() && !dictionary.Save(path, m_messages, m_progress)) {
        m_messages.Error(Tr(strings::kCannotSaveDictionary).arg(path));
        return kCannotSaveDictionary;
    }
    // Only now are the entries in the file: a script must not read that they were added before.
    m_out << util::WithCount(dictionary::Tr(dictionary::strings::kEntriesAdded), added) << '\n';
    return added;
}

qint32 Batch::ExportMemory() {
    CDictionary dictionary;
    if (!dictionary.Load(m_o.file, m_messages, m_progress))
        return kCannotLoad;
    qint64 units = 0;
    if (!dictionary::ExportTmx(m_o.path, dictionary, m_messages, &units))
        return kExportDone;
    m_out << "exported " << units << " entries to " << m_o.path << '\n';
    return 0;
}

qint32 Batch::ImportMemory() {
    CDictionary dictionary;
    // A missing file is an empty dictionary, which the memory fills.
    if (QFileInfo::exists(m_o.file) && !dictionary.Load(m_o.file, m_messages, m_progress))
        return kCannotLoad;
    LeaveOutConflicts chooser;
    const dictionary::TmxImport imported =
        dictionary::ImportTmx(m_o.path, dictionary, chooser, m_messages);
    if (imported.status == dictionary::TmxImport::Status::CannotRead)
        return exchange::kImportCannotRead;
    if (imported.status != dictionary::TmxImport::Status::Read)
        return exchange::kImportNoRow;
    if (chooser.leftOut > 0)
        m_messages.Warn(Tr(strings::kUnitsLeftOut).arg(chooser.leftOut));
    if (dictionary.IsModified() && !dictionary.Save(m_o.file, m_messages, m_progress)) {
        m_messages.Error(Tr(strings::kCannotSaveDictionary).arg(m_o.file));
        return kCannotSaveDictionary;
    }
    m_out << util::WithCount(dictionary::Tr(dictionary::strings::kEntriesAdded), imported.added)
          << '\n';
    return imported.added;
}

qint32 Batch::SaveAs() {
    if (!Load())
        return kCannotLoad;
    if (!m_document.SaveBatchAs(m_o.path))
        return SaveFailed();
    m_out << "saved " << util::sql::PrintableLocation(m_o.file) << " as "
          << util::sql::PrintableLocation(m_o.path) << '\n';
    return 0;
}

} // namespace

BatchOptions ParseBatchOptions(const QStringList& arguments) {
    BatchOptions o;
    if (arguments.size() < 3)
        return o;
    o.file = arguments[1];
    for (qsizetype i = 2; i < arguments.size(); ++i) {
        QString argument = arguments[i];
        if (argument.startsWith(QLatin1Char('-')) || argument.startsWith(QLatin1Char('/')))
            argument.remove(0, 1);
        if (SetFlag(o, argument))
            continue;
        const qsizetype colon = argument.indexOf(QLatin1Char(':'));
        if (colon >= 0)
            SetKey(o, argument.left(colon), argument.mid(colon + 1));
    }
    return o;
}

bool IsBatchWork(const QStringList& arguments) {
    const BatchOptions o = ParseBatchOptions(arguments);
    const bool needsPath = o.operation == Operation::Export ||
                           o.operation == Operation::Translate || o.operation == Operation::SaveAs;
    return o.operation != Operation::None && !(needsPath && o.path.isEmpty());
}

bool RunBatch(AppContext& app, const QStringList& arguments, util::Messages& messages,
              QTextStream& out, util::Progress* progress) {
    if (!IsBatchWork(arguments))
        return false;
    const BatchOptions o = ParseBatchOptions(arguments);
    Batch batch(app, o, messages, out, progress);
    switch (o.operation) {
    case Operation::Export:
        app.exitCode = batch.Export();
        break;
    case Operation::Translate:
        app.exitCode = batch.Translate();
        break;
    case Operation::AddLanguage:
        app.exitCode = batch.AddLanguages();
        break;
    case Operation::ListCaptions:
        app.exitCode = batch.ListCaptions();
        break;
    case Operation::AutoTranslate:
        app.exitCode = batch.AutoTranslate();
        break;
    case Operation::SendDictionary:
        app.exitCode = batch.SendDictionary();
        break;
    case Operation::SaveAs:
        app.exitCode = batch.SaveAs();
        break;
    case Operation::None:
        break;
    }
    return true;
}

int PosixStatus(qint32 exitCode) {
    return int(quint32(exitCode) & 0xFF);
}

} // namespace app
