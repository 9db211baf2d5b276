#pragma once

#include <QString>

namespace questionnaire {

// A caption as it stands in an export file or a grid cell: backslash doubled first, then line
// feed, carriage return and tab written as "\n", "\r" and "\t". Doubling first keeps it
// reversible.
QString EscapeCaption(const QString& text);
// Appends the escaped caption to `out` without building a temporary.
void AppendEscapedCaption(QString& out, const QString& text);

// The exact inverse of EscapeCaption: "\\", "\n", "\r" and "\t" decoded in one pass from the
// left; a backslash before anything else stays. Exchange formats that carry line breaks as
// characters use it; the tab-separated import keeps its own order (UnescapeCell).
QString UnescapeCaption(QStringView text);
// What the import does to a cell: "\r", "\n", "\t" decoded first, then "\\"; then a cell that
// both begins and ends with a double quote loses them and has its doubled quotes halved. The
// order decodes an escaped backslash before n, r or t wrongly; the export warns about such
// captions.
void UnescapeCell(QString& cell);
// The same decoding into `out`, whose storage is reused from call to call.
void UnescapeCellInto(QStringView cell, QString& out);

// What a text typed into a grid cell stores: "\r", "\n" and "\t" decoded first, then "\\". A
// typed "\\n" therefore becomes a backslash and a line feed, as it always has.
QString UnescapeTypedText(const QString& typed);

// False when a caption would not come back unchanged from its own export: it begins and ends
// with a double quote or holds a backslash before n, r or t (see UnescapeCell), holds a zero
// character (readers stop there), or its cell is longer than spreadsheet programs keep. In the
// source column a doubled backslash is lost too: an import of only unchanged captions decodes
// that column twice.
bool CaptionSurvivesRoundTrip(const QString& text, bool sourceColumn = false);

// The longest cell spreadsheet programs keep whole.
inline constexpr qsizetype kSpreadsheetCellLimit = 32767;

} // namespace questionnaire
