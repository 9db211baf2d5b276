#pragma once

#include "questionnaire/Objet.h"

#include <QString>

namespace varnel_wave {

class CArchiveVersion;

// Where a volume's data come from. The first value is the layout version the object was made
// with: a load keeps the object's own, so that an older archive is read into the current layout.
class VolumeSourceInfo : public CObjet {
public:
    VolumeSourceInfo() = default;
    VolumeSourceInfo(const VolumeSourceInfo&) = default;
    VolumeSourceInfo& operator=(const VolumeSourceInfo&) = default;
    ~VolumeSourceInfo() override;
    bool operator==(const VolumeSourceInfo&) const = default;

    // Storing writes the five fields in order; loading passes over the first without taking it.
    void Serialize(CArchiveVersion& archive);

    qint32 m_infoVersion = 0;
    qint32 m_sourceType = 0; // the kind of source file, as the volume's "SourceType"
    QString m_location;      // the source file or connection
    qint32 m_codePage = 0;   // of 8-bit texts in the source; 0 for the system's
    qint32 m_options = 0;
};

} // namespace varnel_wave
