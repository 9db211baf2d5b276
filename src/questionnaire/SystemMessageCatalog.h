#pragma once

#include <QString>

namespace questionnaire {

// System messages are the texts a survey program shows when an answer is rejected or to
// carry routine notices (navigation buttons, end of questionnaire, ...). They are numbered
// from kFirstSystemMessage to kLastSystemMessage with no gaps.
constexpr qint32 kFirstSystemMessage = 2;
constexpr qint32 kLastSystemMessage = 43;
constexpr int kSystemMessageCount = 42;
static_assert(kLastSystemMessage - kFirstSystemMessage + 1 == kSystemMessageCount);

// Standard text of system message `number` in the language of the Windows locale id `lcid`.
// Only the primary language (lcid & 0x3FF) matters, so 1033 and 2057 both give English.
// English, French, German, Spanish, Italian, Dutch and Portuguese have their own texts; any
// other language gets the English one. An unknown number gives an empty string. Texts may
// hold %1, %2 placeholders for QString::arg(); every language of a message has the same ones.
QString StandardSystemMessage(qint32 lcid, qint32 number);

// Short English name of the message, e.g. "Answer required"; empty for an unknown number.
QString SystemMessageName(qint32 number);

} // namespace questionnaire
