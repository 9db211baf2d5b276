#pragma once

#include <QString>
#include <QStringList>

// Small text helpers shared by the whole program.
class CStaticTools {
public:
    // Splits a list at every separator; an empty text gives an empty list, empty items are kept.
    static void ReadStringSeparatorString(const QString& text, QChar separator, QStringList& out);
    // The same split, kept under its second name for the command line's language lists.
    static void LireChaineSeparateurString(const QString& text, QChar separator,
                                           QStringList& out);
    // True, with the value, when the text is an optional sign followed by decimal digits that
    // fit in 32 bits.
    static bool EstLong(QStringView text, qint32& value);
    // The number in the text, or 0 when it is not a whole number.
    static qint32 ToLong(QStringView text);
};
