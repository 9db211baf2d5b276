#pragma once

#include "campaign/ArchiveVersion.h"

#include <memory>
#include <vector>

namespace varnel_wave::detail {

// A list of owned objects in an archive: its count, then each object's own fields.
template <class T>
void SerializeOwned(CArchiveVersion& archive, std::vector<std::unique_ptr<T>>& list) {
    if (archive.IsStoring()) {
        archive.WriteInt32(qint32(list.size()));
        for (const auto& item : list)
            item->Serialize(archive);
        return;
    }
    list.clear();
    qint32 count = 0;
    archive.ReadCount(count);
    // The count is never trusted for memory: a damaged one ends at the end of the bytes.
    for (qint32 i = 0; i < count && !archive.Failed(); ++i) {
        auto item = std::make_unique<T>();
        item->Serialize(archive);
        if (!archive.Failed())
            list.push_back(std::move(item));
    }
}

template <class T>
std::vector<std::unique_ptr<T>> CopyOwned(const std::vector<std::unique_ptr<T>>& list) {
    std::vector<std::unique_ptr<T>> copy;
    copy.reserve(list.size());
    for (const auto& item : list)
        copy.push_back(std::make_unique<T>(*item));
    return copy;
}

} // namespace varnel_wave::detail
