#pragma once

#include <QString>

// An XML document held as text. The questionnaire fills it or builds itself from it; parsing
// happens there, with the library's own XML scanner, so a large document is read once.
class CMarkup {
public:
    CMarkup() = default;
    ~CMarkup() = default;

    // Takes the document text; false for a text with no element in it.
    bool SetDoc(const QString& xml);
    const QString& GetDoc() const { return m_doc; }
    void Clear() { m_doc.clear(); }

private:
    QString m_doc;
};
