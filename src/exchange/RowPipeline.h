#pragma once

#include "exchange/RowCutter.h"

#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace exchange {

// Cuts rows on a second thread and hands them over in batches: on a large file, reading and
// cutting cost about half as much as applying the rows, and the two then overlap. At most a few
// batches exist at once, so memory stays small whatever the size of the file.
class RowPipeline {
public:
    explicit RowPipeline(RowCutter& cutter);
    ~RowPipeline();
    RowPipeline(const RowPipeline&) = delete;
    RowPipeline& operator=(const RowPipeline&) = delete;

    // The next batch, or null when the cutter has no more rows. The batch returned before goes
    // back to be filled again.
    const RowBatch* Next();

private:
    void Produce();

    RowCutter& m_cutter;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<std::unique_ptr<RowBatch>> m_full;
    std::vector<std::unique_ptr<RowBatch>> m_free;
    std::unique_ptr<RowBatch> m_current; // with the consumer
    bool m_done = false;                 // the cutter has no more rows
    bool m_stop = false;                 // the consumer is gone
    std::thread m_thread;
};

} // namespace exchange
