#include "questionnaire/StaticTools.h"

#include <limits>

void CStaticTools::ReadStringSeparatorString(const QString& text, QChar separator,
                                             QStringList& out) {
    out.clear();
    if (text.isEmpty())
        return;
    out = text.split(separator);
}

void CStaticTools::LireChaineSeparateurString(const QString& text, QChar separator,
                                              QStringList& out) {
    ReadStringSeparatorString(text, separator, out);
}

bool CStaticTools::EstLong(QStringView text, qint32& value) {
    qsizetype i = 0;
    bool negative = false;
    if (i < text.size() && (text[i] == QLatin1Char('-') || text[i] == QLatin1Char('+'))) {
        negative = text[i] == QLatin1Char('-');
        ++i;
    }
    if (i == text.size())
        return false;
    qint64 magnitude = 0;
    for (; i < text.size(); ++i) {
        const char16_t c = text[i].unicode();
        if (c < u'0' || c > u'9')
            return false;
        magnitude = magnitude * 10 + (c - u'0');
        if (magnitude > qint64(1) << 31)
            return false;
    }
    const qint64 result = negative ? -magnitude : magnitude;
    if (result > std::numeric_limits<qint32>::max())
        return false;
    value = qint32(result);
    return true;
}

qint32 CStaticTools::ToLong(QStringView text) {
    qint32 value = 0;
    return EstLong(text, value) ? value : 0;
}
