#include "exchange/RowPipeline.h"

namespace exchange {

namespace {
// One batch being cut, one being applied, and one ready in between.
constexpr int kBatches = 3;
} // namespace

RowPipeline::RowPipeline(RowCutter& cutter) : m_cutter(cutter) {
    for (int i = 0; i < kBatches; ++i)
        m_free.push_back(std::make_unique<RowBatch>());
    m_thread = std::thread([this] { Produce(); });
}

RowPipeline::~RowPipeline() {
    {
        std::lock_guard lock(m_mutex);
        m_stop = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

void RowPipeline::Produce() {
    for (;;) {
        std::unique_ptr<RowBatch> batch;
        {
            std::unique_lock lock(m_mutex);
            m_changed.wait(lock, [&] { return m_stop || !m_free.empty(); });
            if (m_stop)
                return;
            batch = std::move(m_free.back());
            m_free.pop_back();
        }
        // The cutter is used by this thread alone from here on.
        const bool more = m_cutter.NextBatch(*batch);
        {
            std::lock_guard lock(m_mutex);
            if (more)
                m_full.push_back(std::move(batch));
            else
                m_done = true;
        }
        m_changed.notify_all();
        if (!more)
            return;
    }
}

const RowBatch* RowPipeline::Next() {
    std::unique_lock lock(m_mutex);
    if (m_current) {
        m_free.push_back(std::move(m_current));
        m_changed.notify_all();
    }
    m_changed.wait(lock, [&] { return !m_full.empty() || m_done; });
    if (m_full.empty())
        return nullptr;
    m_current = std::move(m_full.front());
    m_full.pop_front();
    return m_current.get();
}

} // namespace exchange
