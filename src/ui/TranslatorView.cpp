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
#include "util/Process.h"
#include "util/ProcessThreads.h"

#include <QDir>
#include <QItemSelectionModel>
#include <QMessageBox>
#include <QPrinter>
#include <QPushButton>
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
    exchange::ExportReport report;
    const exchange::ExportOptions options = dialog.Options();
    QString path = dialog.Path();
    if (dialog.ChosenFormat() == ExportDialog::Format::TabSeparated) {
        exchange::ExportStringsForTranslation(path, *q, options, m_document->Captions().Rows(),
                                              m_document->Messages(), &report, &progress);
    } else {
        const auto version = dialog.ChosenFormat() == ExportDialog::Format::Xliff20
                                 ? exchange::XliffVersion::V20
                                 : exchange::XliffVersion::V12;
        exchange::ExportXliff(path, *q, options, version, m_document->Captions().Rows(),
                              m_document->Messages(), &report, &progress);
        // Several target languages make a file each: the first is the one offered.
        path = exchange::XliffExportPaths(path, *q, options).constFirst();
    }
    if (!report.written)
        return;
    switch (AskAfterExport(path)) {
    case AfterExport::Open:
        OpenExported(path);
        break;
    case AfterExport::ShowFolder:
        if (!util::ShowInFileManager(path))
            m_document->Messages().Error(Tr(strings::kCannotShowFolder).arg(path));
        break;
    case AfterExport::Nothing:
        break;
    }
}

TranslatorView::AfterExport TranslatorView::AskAfterExport(const QString& path) {
    QMessageBox box(QMessageBox::Question, QCoreApplication::applicationName(),
                    Tr(strings::kExported).arg(QDir::toNativeSeparators(path)),
                    QMessageBox::NoButton, this);
    QPushButton* open = box.addButton(Tr(strings::kOpenExported), QMessageBox::AcceptRole);
    QPushButton* folder = box.addButton(Tr(strings::kShowInFolder), QMessageBox::ActionRole);
    box.addButton(QMessageBox::Close);
    box.setDefaultButton(open);
    box.exec();
    if (box.clickedButton() == open)
        return AfterExport::Open;
    if (box.clickedButton() == folder)
        return AfterExport::ShowFolder;
    return AfterExport::Nothing;
}

void TranslatorView::OpenExported(const QString& path) {
    // The editing program runs on its own thread; the answer comes back here when it ends, and
    // is dropped if this window was closed meanwhile.
    auto done = [this, path](int result) {
        if (result == util::kFileChanged) {
            if (m_document->Messages().Ask(
                    Tr(strings::kImportSaved).arg(QDir::toNativeSeparators(path)),
                    {util::Answer::Yes, util::Answer::No}) == util::Answer::Yes)
                ImportTranslation(path);
        } else if (result == util::kNoAssociatedProgram) {
            m_document->Messages().Error(
                Tr(strings::kNoProgramFor).arg(QDir::toNativeSeparators(path)));
        } else if (result != util::kFileUnchanged) {
            m_document->Messages().Error(
                Tr(strings::kCannotStartProgram).arg(QDir::toNativeSeparators(path)));
        }
    };
    const qint64 started = m_editorCommand.isEmpty()
                               ? util::EditFileOnThread(path, this, done)
                               : util::EditFileOnThread(path, m_editorCommand, this, done);
    if (started == 0)
        m_document->Messages().Error(
            Tr(strings::kCannotStartProgram).arg(QDir::toNativeSeparators(path)));
}

void TranslatorView::ImportTranslation(const QString& path) {
    m_grid->FinishEdit();
    CQuestionnaire* q = m_document->Document().Questionnaire();
    if (!q)
        return;
    ImportDialog dialog(*q, this);
    if (!path.isEmpty())
        dialog.SetPath(path);
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
        exchange::IsXliffPath(dialog.Path())
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
