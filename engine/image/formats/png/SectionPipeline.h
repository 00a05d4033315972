#pragma once

#include "engine/image/formats/png/SectionCoder.h"
#include "engine/threads/SpareThreads.h"

#include <condition_variable>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>

namespace pagestack {

/// A section of a PNG image on its way to the file.
struct Section
{
    enum class State { Waiting, InWork, Done };

    /// `bytesOfFrame` is room before and behind the compressed rows.
    Section(std::size_t bytesOfRow, std::size_t mostRows, std::size_t bytesOfFrame);

    /// Makes it ready to be filled again.
    void reset();

    SectionRows filled() const { return { raw.get() + rowBytes, rows, rowBytes }; }

    std::size_t rowBytes;
    std::size_t frameBytes;
    std::unique_ptr<std::uint8_t[]> raw; ///< the row above the section and those of the section
    std::size_t rows = 0; ///< of the section, so far
    bool endsStream = false;

    std::unique_ptr<std::uint8_t[]> compressed; ///< the rows from `frameBytes` on
    std::size_t compressedBytes = 0;
    std::uint32_t checksum = 1; ///< Adler-32 of the filtered rows
    std::exception_ptr failure;

    State state = State::Waiting; ///< guarded by the line's mutex
};

/// Filters and compresses sections in the way that suits the pixels of each, several at a time when
/// threads are spare, and gives them back in order. One thread at a time.
class SectionPipeline
{
public:
    using MakeCoder = std::function<std::unique_ptr<SectionCoder>()>;

    /// `threads`, null when there are none to be had, outlives the line. `makeCoder` is called on
    /// any thread.
    SectionPipeline(MakeCoder makeCoder, SpareThreads* threads);

    /// Waits for the sections in work.
    ~SectionPipeline();
    SectionPipeline(const SectionPipeline&) = delete;
    SectionPipeline& operator=(const SectionPipeline&) = delete;

    /// Takes a section that is filled, to be compressed.
    void add(std::unique_ptr<Section> section);

    /// The section that was added first, once it is compressed; null when none was added or, unless
    /// it `isUrgent`, when others can be added first. Throws what its compression threw.
    std::unique_ptr<Section> take(bool isUrgent);

private:
    void addHelper();
    void help();
    Section* nextWaiting() const;
    void compress(std::unique_lock<std::mutex>& lock, Section& section,
                  std::unique_ptr<SectionCoder>& coder);

    const MakeCoder m_makeCoder;
    SpareThreads* m_threads;
    std::unique_ptr<SectionCoder> m_coder; ///< of the thread that uses the line
    std::vector<std::thread> m_helpers;

    std::mutex m_mutex; ///< guards the fields below
    std::condition_variable m_changed;
    std::deque<std::unique_ptr<Section>> m_sections; ///< in the order of the stream
    bool m_isClosing = false;
};

} // namespace pagestack
