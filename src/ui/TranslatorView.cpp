#include "ui/TranslatorView.h"

#include "dictionary/Dictionary.h"
#include "dictionary/DictionaryPasses.h"
#include "dictionary/Strings.h"
#include "exchange/ExportFile.h"
#include "exchange/ImportFile.h"
#include "exchange/XliffFile.h"
#include "ui/CaptionGrid.h"
#include "ui/CaptionModel.h"
#include "ui/OpenDocument.h"
#include "ui/Strings.h"
#include "ui/dialogs/ExportDialog.h"
#include "ui/dialogs/ImportDialog.h"
#include "ui/support/ConflictDialog.h"

#include <QItemSelectionModel>
#include <QPrinter>
#include <QVBoxLayout>

namespace ui {

TranslatorView::TranslatorView(std::shared_ptr<OpenDocument> document, DictionaryHolder& dictionary,
                               QWidget* parent)
    : QWidget(parent), m_document(std::move(document)), m_dictionary(dictionary),
      m_grid(new CaptionGrid(this)), m_model(new CaptionModel(m_document->Captions(), this)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_grid);
    m_grid->setModel(m_model);
    setFocusProxy(m_grid);
    connect(m_grid->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &TranslatorView::SelectionChanged);
    // A refill makes a new selection model's worth of state: the commands must look again.
    connect(m_model, &QAbstractItemModel::modelReset, this, &TranslatorView::SelectionChanged);
    connect(m_grid, &CaptionGrid::ContextMenuWanted, this, &TranslatorView::ContextMenuWanted);
}

TranslatorView::~TranslatorView() {
    // The grid and the model go before the document they read from, which a member keeps.
    delete m_grid;
    delete m_model;
}

bool TranslatorView::CanSendToDictionary() const {
    return m_grid->HasSelection();
}

void TranslatorView::ExportStrings() {
    m_grid->FinishEdit();
    CQuestionnaire* q = m_document->Document().Questionnaire();
    if (!q)
        return;
    ExportDialog dialog(*q, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    ProgressDialog& progress = m_document->Progress();
    progress.SetCancel(ProgressDialog::Cancel::Offered); // a stopped export keeps the old file
    const exchange::ExportOptions options = dialog.Options();
    const QString path = dialog.Path();
    const bool tabSeparated = dialog.ChosenFormat() == ExportDialog::Format::TabSeparated;
    if (app::ExportWouldReplaceSource(tabSeparated ? QStringList{path}
                                                   : exchange::XliffExportPaths(path, *q, options),
                                      m_document->Document().Path(), m_document->Messages()))
        return;
    // Nothing follows a completed export; the export itself warns about captions the file
    // cannot carry unchanged.
    if (tabSeparated) {
        exchange::ExportStringsForTranslation(path, *q, options, m_document->Captions().Rows(),
                                              m_document->Messages(), nullptr, &progress);
    } else {
        const auto version = dialog.ChosenFormat() == ExportDialog::Format::Xliff20
                                 ? exchange::XliffVersion::V20
                                 : exchange::XliffVersion::V12;
        exchange::ExportXliff(path, *q, options, version, m_document->Captions().Rows(),
                              m_document->Messages(), nullptr, &progress);
    }
}

void TranslatorView::ImportTranslation() {
    m_grid->FinishEdit();
    CQuestionnaire* q = m_document->Document().Questionnaire();
    if (!q)
        return;
    ImportDialog dialog(*q, this);
    if (dialog.exec() != QDialog::Accepted)
        return;
    questionnaire::CaptionTable& table = m_document->Captions();
    exchange::ImportOptions options;
    options.onlyUnchanged = dialog.OnlyUnchanged();
    options.referenceLanguage = dialog.ReferenceLanguage();
    options.copyIdentical = dialog.CopyIdentical();
    options.languages = table.Languages();
    ProgressDialog& progress = m_document->Progress();
    progress.SetCancel(ProgressDialog::Cancel::Offered); // a stopped import changes nothing
    const qint32 imported =
        exchange::IsXliffFile(dialog.Path())
            ? exchange::ImportXliff(*q, dialog.Path(), options, table.Rows(),
                                    m_document->Messages())
            : exchange::ImportTranslatedFile(*q, dialog.Path(), options, table.Rows(),
                                             m_document->Messages(), nullptr, &progress);
    if (imported > 0)
        table.QuestionnaireChanged(); // marks the document modified and refills every view
}

void TranslatorView::SendToDictionary() {
    m_grid->FinishEdit();
    if (!m_grid->HasSelection())
        return;
    qsizetype first = -1;
    qsizetype last = -1;
    for (const QItemSelectionRange& range : m_grid->selectionModel()->selection()) {
        first = first < 0 ? range.top() : std::min<qsizetype>(first, range.top());
        last = std::max<qsizetype>(last, range.bottom());
    }
    if (first < 0)
        return;
    CDictionary& dictionary = m_dictionary.Get();
    DialogConflictChooser chooser(this);
    ProgressDialog& progress = m_document->Progress();
    progress.SetCancel(ProgressDialog::Cancel::NotOffered);
    int added = 0;
    if (!dictionary::SendToDictionary(m_document->Captions(), first, last, dictionary, chooser,
                                      added, &progress))
        return;                         // the user cancelled a conflict: no count
    m_dictionary.NotifySent(added > 0); // the dictionary window lists the new entries
    m_document->Messages().Inform(
        util::WithCount(dictionary::Tr(dictionary::strings::kEntriesAdded), added));
}

void TranslatorView::AutoTranslate() {
    m_grid->FinishEdit();
    CDictionary& dictionary = m_dictionary.Get();
    ProgressDialog& progress = m_document->Progress();
    progress.SetCancel(ProgressDialog::Cancel::Offered); // what was stored so far is kept
    const int count = dictionary::AutoTranslate(m_document->Captions(), dictionary, &progress);
    m_document->Messages().Inform(
        util::WithCount(dictionary::Tr(dictionary::strings::kCaptionsTranslated), count));
}

bool TranslatorView::PrintTo(QPrinter& printer) {
    if (m_grid->Print(printer))
        return true;
    const QString name =
        printer.outputFileName().isEmpty() ? printer.printerName() : printer.outputFileName();
    m_document->Messages().Error(Tr(strings::kCannotPrint).arg(name));
    return false;
}

} // namespace ui
