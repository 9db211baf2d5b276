#pragma once

#include "campaign/Volume.h"
#include "questionnaire/Objet.h"

#include <QString>

#include <memory>
#include <vector>

namespace varnel_wave {

class CArchiveVersion;

// One wave of a campaign, with the volumes it collected. The campaign owns the volumes; the wave
// lists them.
class CWave : public CObjet {
public:
    CWave() = default;
    // Copies the fields and the list; volumes the source wave read itself are copied with it and
    // point back to the copy, the others are shared.
    CWave(const CWave& other);
    CWave& operator=(const CWave&) = delete;
    ~CWave() override;

    // Lists `volume` (not owned) and makes it point back to this wave.
    void AddVolume(CVolume* volume);
    const std::vector<CVolume*>& Volumes() const { return m_volumes; }

    // The wave id twice (the second one stands on loading), the order, name and description,
    // the three dates, the count of volumes and each volume, and the trailing value. Loading
    // replaces the volume list with the volumes read, which this wave owns until taken.
    void Serialize(CArchiveVersion& archive);
    // Hands over the volumes the last load read, in order; they stay listed in the wave.
    std::vector<std::unique_ptr<CVolume>> TakeLoadedVolumes();

    qint32 m_waveID = 0;
    qint32 m_waveOrder = 0;
    QString m_name;
    QString m_description;
    double m_waveStart = 0; // OLE dates
    double m_waveEnd = 0;
    double m_waveMidpoint = 0;
    // Closes the wave's record in the archive; kept as read, so that a round trip changes nothing.
    qint32 m_trailingValue = 0;

private:
    friend class CCampaign; // rebuilds the lists of the waves it copies

    std::vector<CVolume*> m_volumes;
    std::vector<std::unique_ptr<CVolume>> m_loadedVolumes;
};

} // namespace varnel_wave
