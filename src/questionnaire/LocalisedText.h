#pragma once

#include <QString>

#include <utility>
#include <vector>

// One caption in several languages. Kept as a vector sorted by language id: a caption has a few
// dozen languages at most, and a million captions must stay small in memory.
class CLocalisedText {
public:
    using Entry = std::pair<qint32, QString>;

    // Empty string when the language has no text.
    const QString& Get(qint32 language) const;
    bool Has(qint32 language) const;
    // Creates the text for the language when it has none (an empty text is a text).
    void Set(qint32 language, const QString& text);
    void Remove(qint32 language);
    void Clear() { m_texts.clear(); }
    bool IsEmpty() const { return m_texts.empty(); }

    // In ascending language order.
    const std::vector<Entry>& Entries() const { return m_texts; }

    bool operator==(const CLocalisedText& other) const = default;

private:
    std::vector<Entry>::const_iterator Find(qint32 language) const;
    std::vector<Entry> m_texts;
};
