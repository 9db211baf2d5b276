#pragma once

#include <QString>

class CLocalisedText;
class CQuestionnaire;

namespace questionnaire {

// A caption is addressed by (question id, response id). Negative question ids mark the two
// kinds of captions that do not belong to a question; negative response ids pick a question's
// own captions.
constexpr qint32 kSystemMessageMarker = -1; // response id = message number 2..43
constexpr qint32 kRoutingMarker = -2;       // response id = routing id
constexpr qint32 kLongCaption = -1;
constexpr qint32 kShortCaption = -2;
constexpr qint32 kInstructions = -3;
constexpr qint32 kComments = -4;

// The caption's text in a language; empty when the question, response or routing is unknown.
QString ReadCaption(const CQuestionnaire& q, qint32 questionId, qint32 responseId,
                    qint32 language);

// Where the texts of a question, response or routing caption live, to read several languages of
// one row without looking it up again; null for system messages and unknown ids.
const CLocalisedText* FindCaptionTexts(const CQuestionnaire& q, qint32 questionId,
                                       qint32 responseId);

// The texts that WriteCaption changes for this row: the caption's, or a system message's custom
// texts; null for unknown ids.
CLocalisedText* FindWritableTexts(CQuestionnaire& q, qint32 questionId, qint32 responseId);

// Writes a caption; unknown ids are ignored. A system message equal to its standard text loses
// its customisation, and one equal to its current text is left alone.
void WriteCaption(CQuestionnaire& q, qint32 questionId, qint32 responseId, qint32 language,
                  const QString& text);

} // namespace questionnaire
