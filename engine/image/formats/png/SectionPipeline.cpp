#include "engine/image/formats/png/SectionPipeline.h"

#include <libdeflate.h>

#include <algorithm>
#include <system_error>

namespace pagestack {

namespace {

    // Each takes the memory of three sections. More of them would wait for the pixels to be read.
    constexpr std::size_t mostHelpers = 2;

    void compressSection(Section& section, SectionCoder& coder)
    {
        const SectionRows rows = section.filled();
        const SectionPlan plan = coder.choosePlan(rows);
        const std::span<const std::uint8_t> filtered = coder.filter(plan.filtering, rows);
        section.checksum = libdeflate_adler32(1, filtered.data(), filtered.size());
        section.compressedBytes = coder.compress(plan.coding, filtered, section.endsStream,
                                                 section.compressed.get() + section.frameBytes);
    }

} // namespace

Section::Section(std::size_t bytesOfRow, std::size_t mostRows, std::size_t bytesOfFrame)
    : rowBytes(bytesOfRow)
    , frameBytes(bytesOfFrame)
    , raw(std::make_unique_for_overwrite<std::uint8_t[]>((1 + mostRows) * rowBytes))
    , compressed(std::make_unique_for_overwrite<std::uint8_t[]>(
          2 * frameBytes + SectionCoder::bound(mostRows * (1 + rowBytes))))
{
}

void Section::reset()
{
    rows = 0;
    state = State::Waiting;
}

SectionPipeline::SectionPipeline(MakeCoder makeCoder, SpareThreads* threads)
    : m_makeCoder(std::move(makeCoder))
    , m_threads(threads)
{
}

SectionPipeline::~SectionPipeline()
{
    {
        const std::scoped_lock lock(m_mutex);
        m_isClosing = true;
    }
    m_changed.notify_all();
    for (std::thread& helper : m_helpers)
        helper.join();
}

void SectionPipeline::add(std::unique_ptr<Section> section)
{
    const bool isAlone = section->endsStream && m_helpers.empty();
    {
        const std::scoped_lock lock(m_mutex);
        m_sections.push_back(std::move(section));
    }
    if (m_threads != nullptr && !isAlone && m_helpers.size() < mostHelpers)
        addHelper();
    m_changed.notify_all();
}

void SectionPipeline::addHelper()
{
    ThreadClaim claim = m_threads->tryTake();
    if (!claim)
        return;
    try {
        m_helpers.emplace_back([this, own = std::move(claim)] { help(); });
    } catch (const std::system_error&) {
        m_threads = nullptr; // The system has no thread left.
    }
}

std::unique_ptr<Section> SectionPipeline::take(bool isUrgent)
{
    std::unique_lock lock(m_mutex);
    // Besides those in work one lies ready for the helper that is done first.
    const std::size_t mostAhead = m_helpers.empty() ? 0 : m_helpers.size() + 1;
    while (!m_sections.empty() && m_sections.front()->state != Section::State::Done) {
        if (!isUrgent && m_sections.size() <= mostAhead)
            return nullptr;
        if (Section* const section = nextWaiting())
            compress(lock, *section, m_coder);
        else
            m_changed.wait(lock);
    }
    if (m_sections.empty())
        return nullptr;
    std::unique_ptr<Section> section = std::move(m_sections.front());
    m_sections.pop_front();
    lock.unlock();
    if (section->failure)
        std::rethrow_exception(std::exchange(section->failure, nullptr));
    return section;
}

void SectionPipeline::help()
{
    std::unique_ptr<SectionCoder> coder;
    std::unique_lock lock(m_mutex);
    while (!m_isClosing) {
        if (Section* const section = nextWaiting())
            compress(lock, *section, coder);
        else
            m_changed.wait(lock);
    }
}

Section* SectionPipeline::nextWaiting() const
{
    const auto isWaiting
        = [](const auto& section) { return section->state == Section::State::Waiting; };
    const auto found = std::find_if(m_sections.begin(), m_sections.end(), isWaiting);
    return found == m_sections.end() ? nullptr : found->get();
}

/// Unlocks the line meanwhile.
void SectionPipeline::compress(std::unique_lock<std::mutex>& lock, Section& section,
                               std::unique_ptr<SectionCoder>& coder)
{
    section.state = Section::State::InWork;
    lock.unlock();
    try {
        if (!coder)
            coder = m_makeCoder();
        compressSection(section, *coder);
    } catch (...) {
        section.failure = std::current_exception();
    }
    lock.lock();
    section.state = Section::State::Done;
    m_changed.notify_all();
}

} // namespace pagestack
