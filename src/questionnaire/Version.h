#pragma once

#include "questionnaire/Objet.h"

#include <QString>

// A version of the questionnaire (a mode or a wave): questions and responses may belong to some
// versions only.
class CVersion : public CObjet {
public:
    CVersion() = default;
    CVersion(qint32 id, const QString& name) : m_id(id), m_name(name) {}

    qint32 GetId() const { return m_id; }
    const QString& GetName() const { return m_name; }

    bool operator==(const CVersion& other) const {
        return m_id == other.m_id && m_name == other.m_name;
    }

    qint32 m_id = 0;
    QString m_name;
};
