#include "campaign/Wave.h"

#include "campaign/ArchiveVersion.h"

namespace varnel_wave {

CWave::CWave(const CWave& other)
    : CObjet(other), m_waveID(other.m_waveID), m_waveOrder(other.m_waveOrder), m_name(other.m_name),
      m_description(other.m_description), m_waveStart(other.m_waveStart),
      m_waveEnd(other.m_waveEnd), m_waveMidpoint(other.m_waveMidpoint),
      m_trailingValue(other.m_trailingValue) {
    for (CVolume* volume : other.m_volumes) {
        bool owned = false;
        for (const auto& loaded : other.m_loadedVolumes)
            owned = owned || loaded.get() == volume;
        if (!owned) {
            m_volumes.push_back(volume);
            continue;
        }
        m_loadedVolumes.push_back(std::make_unique<CVolume>(*volume));
        m_loadedVolumes.back()->m_wave = this;
        m_volumes.push_back(m_loadedVolumes.back().get());
    }
}

CWave::~CWave() = default;

void CWave::AddVolume(CVolume* volume) {
    volume->m_wave = this;
    m_volumes.push_back(volume);
}

void CWave::Serialize(CArchiveVersion& archive) {
    if (archive.IsStoring()) {
        archive.WriteInt32(m_waveID);
        archive.WriteInt32(m_waveID);
    } else {
        archive.ReadInt32(m_waveID);
        archive.ReadInt32(m_waveID);
    }
    archive.Exchange(m_waveOrder);
    archive.Exchange(m_name);
    archive.Exchange(m_description);
    archive.ExchangeDateTime(m_waveStart);
    archive.ExchangeDateTime(m_waveEnd);
    archive.ExchangeDateTime(m_waveMidpoint);
    if (archive.IsStoring()) {
        archive.WriteInt32(qint32(m_volumes.size()));
        for (CVolume* volume : m_volumes)
            volume->Serialize(archive);
    } else {
        m_volumes.clear();
        m_loadedVolumes.clear();
        qint32 count = 0;
        archive.ReadCount(count);
        for (qint32 i = 0; i < count && !archive.Failed(); ++i) {
            auto volume = std::make_unique<CVolume>();
            volume->Serialize(archive);
            if (archive.Failed())
                break;
            m_loadedVolumes.push_back(std::move(volume));
            AddVolume(m_loadedVolumes.back().get());
        }
    }
    archive.Exchange(m_trailingValue);
}

std::vector<std::unique_ptr<CVolume>> CWave::TakeLoadedVolumes() {
    std::vector<std::unique_ptr<CVolume>> taken = std::move(m_loadedVolumes);
    m_loadedVolumes.clear();
    return taken;
}

} // namespace varnel_wave
