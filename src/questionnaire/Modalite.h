#pragma once

#include "questionnaire/LocalisedText.h"
#include "questionnaire/Objet.h"

#include <QList>
#include <QString>

// A response of a question.
class CModalite : public CObjet {
public:
    CModalite() = default;
    CModalite(qint32 id, const QString& entryCode) : m_id(id), m_entryCode(entryCode) {}

    const QString& GetLocalisedLongCaption(qint32 language) const {
        return m_caption.Get(language);
    }
    void SetLocalisedLongCaption(qint32 language, const QString& text) {
        m_caption.Set(language, text);
    }
    const CLocalisedText& Caption() const { return m_caption; }

    // Ids of the versions the response belongs to; empty means all versions.
    const QList<qint32>& GetVersions() const { return m_versions; }
    void SetVersions(const QList<qint32>& versions) { m_versions = versions; }

    bool operator==(const CModalite& other) const = default;

    qint32 m_id = 0;
    QString m_entryCode; // the code typed for the response

private:
    CLocalisedText m_caption;
    QList<qint32> m_versions;
};
