#include "engine/image/tiffwriter/PieceCarrier.h"

#include "engine/files/StagedFile.h"
#include "engine/image/tiffwriter/CopiedPage.h"

#include <QScopeGuard>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

namespace pagestack {

namespace {

    // Each holds what a worker has encoded, in memory or in a temporary file.
    constexpr std::size_t mostLoads = 8;
    // Less is written sooner than another thread is woken.
    constexpr std::uint64_t fewestBytes = std::uint64_t { 64 } * 1024;
    constexpr std::chrono::milliseconds longestPatience { 8 };

} // namespace

struct PieceCarrier::Load
{
    std::vector<EncodedPieces::Piece> pieces;
    std::shared_ptr<ByteSpool> bytes;
    const StagedFile* file;
    std::uint64_t begin;

    void carry() const
    {
        const std::span<std::uint8_t> buffer = copyBuffer();
        std::uint64_t at = begin;
        std::size_t held = 0;
        const auto put = [&] {
            file->fill(at, buffer.first(held));
            at += std::exchange(held, 0);
        };
        for (const EncodedPieces::Piece& piece : pieces)
            for (std::uint64_t done = 0; done < piece.size;) {
                if (held == buffer.size())
                    put();
                const auto part = buffer.subspan(
                    held, std::min<std::uint64_t>(buffer.size() - held, piece.size - done));
                bytes->readAt(piece.offset + done, part);
                done += part.size();
                held += part.size();
            }
        put();
    }
};

struct PieceCarrier::Road
{
    std::mutex mutex; ///< guards all
    std::condition_variable isShorter;
    std::deque<Load> waiting;
    std::deque<Load> failed;
    std::size_t inWork = 0;
    std::uint64_t bytes = 0; ///< of all that is not done

    /// Carries the first that waits, if one does.
    void carryNext()
    {
        std::unique_lock lock(mutex);
        if (waiting.empty())
            return;
        Load load = std::move(waiting.front());
        waiting.pop_front();
        ++inWork;
        lock.unlock();
        const std::uint64_t size = load.bytes->size();
        bool isDone = true;
        try {
            load.carry();
            load.bytes.reset();
        } catch (const std::exception&) {
            isDone = false; // the thread of the carrier does it again and meets the same
        }
        lock.lock();
        if (isDone)
            bytes -= size;
        else
            failed.push_back(std::move(load));
        --inWork;
        isShorter.notify_all();
    }
};

PieceCarrier::PieceCarrier(RunLater later)
    : m_later(std::move(later))
    , m_road(std::make_shared<Road>())
{
}

PieceCarrier::~PieceCarrier()
{
    std::unique_lock lock(m_road->mutex);
    m_road->waiting.clear();
    m_road->isShorter.wait(lock, [this] { return m_road->inWork == 0; });
}

bool PieceCarrier::takes(const EncodedPieces& pieces, const StagedFile& file)
{
    if (!m_later || !pieces.bytes || pieces.bytes->size() < fewestBytes)
        return false;
    const bool isRoomy = hasRoom(pieces.bytes->size(), file);
    if (!isRoomy)
        finish();
    return isRoomy;
}

/// For what comes meanwhile, such as directories, too. Pages that are prepared ahead are dropped
/// before they take the last of it.
bool PieceCarrier::hasRoom(std::uint64_t bytes, const StagedFile& file) const
{
    constexpr std::uint64_t reserve = std::uint64_t { 32 } * 1024 * 1024;
    const std::scoped_lock lock(m_road->mutex);
    return m_road->bytes + bytes + reserve <= file.freeBytes();
}

void PieceCarrier::add(const EncodedPieces& pieces, const StagedFile& file, std::uint64_t begin)
{
    awaitAtMost(mostLoads - 1);
    {
        const std::scoped_lock lock(m_road->mutex);
        m_road->waiting.push_back({ pieces.pieces, pieces.bytes, &file, begin });
        m_road->bytes += pieces.bytes->size();
    }
    if (!m_later([road = m_road] { road->carryNext(); }))
        m_road->carryNext();
}

/// Lends a hand where no other thread comes to it; several would only take turns at the file.
void PieceCarrier::awaitAtMost(std::size_t loads)
{
    std::unique_lock lock(m_road->mutex);
    const auto isOver = [&] { return m_road->waiting.size() + m_road->inWork <= loads; };
    while (!m_road->isShorter.wait_for(lock, longestPatience, isOver)) {
        if (m_road->inWork > 0)
            continue;
        lock.unlock();
        m_road->carryNext();
        lock.lock();
    }
}

void PieceCarrier::retry()
{
    std::unique_lock lock(m_road->mutex);
    while (!m_road->failed.empty()) {
        const Load load = std::move(m_road->failed.front());
        m_road->failed.pop_front();
        lock.unlock();
        auto back = qScopeGuard([&] {
            lock.lock();
            m_road->failed.push_back(load);
        });
        load.carry();
        back.dismiss();
        lock.lock();
        m_road->bytes -= load.bytes->size();
    }
}

void PieceCarrier::finish()
{
    awaitAtMost(0);
    retry();
}

} // namespace pagestack
