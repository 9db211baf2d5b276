#pragma once

#include <QString>

namespace ui {

// A caption shown in a tip as it stands. A tip takes text that looks like markup for rich text,
// shows tags as formatting and loads the images they name (a questionnaire from anywhere could
// name a device there), so the text goes in escaped, its spaces kept and its lines wrapped.
inline QString PlainTip(const QString& text) {
    if (text.isEmpty())
        return {};
    return QStringLiteral("<p style=\"white-space:pre-wrap\">") + text.toHtmlEscaped() +
           QStringLiteral("</p>");
}

} // namespace ui
