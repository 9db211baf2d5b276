#pragma once

#include "questionnaire/CaptionTable.h"

#include <QIcon>

namespace ui {

// The icon of a caption row, by its kind: drawn rather than loaded, so that it stays sharp at
// any screen scale. The icons are made once and shared.
const QIcon& RowIcon(questionnaire::RowKind kind);

// The toolbar's pictures for the commands that the icon theme may not have.
enum class CommandIcon { Cut, Copy, Paste, Print, About, Dictionary };
QIcon DrawnIcon(CommandIcon command);

} // namespace ui
