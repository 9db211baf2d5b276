#include "ui/Translations.h"

#include <QApplication>
#include <QIcon>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include <memory>

namespace ui {

namespace {

// The compiled translations are embedded as translator_<language>.qm.
const QString kTranslationsFolder = QStringLiteral(":/i18n");
// Marks our translators among the application's children, so a second call replaces them.
const char kTranslatorName[] = "ui::InstallTranslations";

void RemoveInstalled(QApplication& application) {
    const auto installed = application.findChildren<QTranslator*>(QLatin1String(kTranslatorName),
                                                                  Qt::FindDirectChildrenOnly);
    for (QTranslator* translator : installed) {
        QCoreApplication::removeTranslator(translator);
        delete translator;
    }
}

bool Install(QApplication& application, const QString& file, const QString& folder) {
    auto translator = std::make_unique<QTranslator>(&application);
    translator->setObjectName(QLatin1String(kTranslatorName));
    if (!translator->load(file, folder) || !QCoreApplication::installTranslator(translator.get()))
        return false;
    translator.release(); // owned by the application from now on
    return true;
}

} // namespace

QString InstallTranslations(QApplication& application, const QStringList& languages) {
    RemoveInstalled(application);
    for (const QString& language : languages) {
        // The texts are written in English: a user who prefers it gets them as they are.
        if (QLocale(language).language() == QLocale::English)
            return {};
        // QTranslator drops the suffixes one by one, so "de_AT" finds translator_de.qm.
        const QString name = QString(language).replace(QLatin1Char('-'), QLatin1Char('_'));
        if (!Install(application, QStringLiteral("translator_") + name, kTranslationsFolder))
            continue;
        // Standard buttons and dialogs in the same language, when Qt's translations are there.
        Install(application, QStringLiteral("qtbase_") + name,
                QLibraryInfo::path(QLibraryInfo::TranslationsPath));
        return name;
    }
    return {};
}

void SetUpApplication(QApplication& application) {
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/translator.svg")));
    // Lets desktops that match windows to their desktop entry (Wayland) find ours.
    QGuiApplication::setDesktopFileName(QStringLiteral("translator"));
    InstallTranslations(application, QLocale::system().uiLanguages());
}

} // namespace ui
