#pragma once

#include <QStringList>

class QApplication;

namespace ui {

// Readies a new QApplication for the window: the program's icon and desktop entry, and the
// translations of the program and of Qt's own texts for the user's languages (LANGUAGE, LC_ALL,
// LC_MESSAGES, LANG).
void SetUpApplication(QApplication& application);

// Installs the translations for the first of `languages` (BCP 47 names such as "de-AT", most
// wanted first) that the program has been translated into, and removes the ones installed
// before. English is the program's own language: reaching it first installs none. Returns the
// language installed ("de_AT" for "de-AT"), empty when the texts stay English.
QString InstallTranslations(QApplication& application, const QStringList& languages);

} // namespace ui
