#pragma once

#include <QList>
#include <QString>

#include <span>
#include <utility>
#include <vector>

// One caption in several languages. Kept as a vector sorted by language id: a caption has a few
// dozen languages at most, and a million captions must stay small in memory.
class CLocalisedText {
public:
    using Entry = std::pair<qint32, QString>;

    // Empty string when the language has no text.
    const QString& Get(qint32 language) const;
    // The same, for a caller reading one language of many captions in turn: `hint` is where the
    // language stood in the caption before, tried first (captions mostly have the same languages),
    // and is set to where it stands in this one.
    const QString& Get(qint32 language, size_t& hint) const;
    bool Has(qint32 language) const;
    // Creates the text for the language when it has none (an empty text is a text).
    void Set(qint32 language, const QString& text);
    // Sets several languages at once, `texts` ascending by language, each language once: one
    // pass, and at most one new allocation however many languages are new.
    void SetMany(std::span<const Entry> texts);
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

// Reads one caption's texts for a fixed list of languages in a single walk over its entries: the
// export and the import look up every language of every caption, a hundred or more per row.
class LanguageColumns {
public:
    // A language of 0 stands for a column that holds no caption text; it always reads empty.
    explicit LanguageColumns(const QList<qint32>& languages);

    qsizetype size() const { return m_columnCount; }
    // Fills out[i] with the text of column i; a null `texts` reads empty everywhere.
    void Read(const CLocalisedText* texts, std::vector<const QString*>& out) const;

private:
    qsizetype m_columnCount = 0;
    std::vector<std::pair<qint32, qsizetype>> m_byLanguage; // (language, column), ascending
    // The column of each language, the spare slot m_columnCount for those without one; empty
    // when a language is too large for a table or has two columns.
    std::vector<qint32> m_columnOf;
};
