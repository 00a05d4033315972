#include "engine/image/TiffDocument.h"

#include "engine/image/decode/TiffPage.h"
#include "engine/support/Application.h"
#include "engine/threads/StopScope.h"

#include <QFileInfo>

#include <stdexcept>

namespace pagestack {

TiffDocument::TiffDocument(const QString& path, const PageTreatment& treatment)
    : m_reader(std::make_shared<TiffReader>(path))
    , m_treatment(treatment)
{
}

TiffDocument::TiffDocument(std::shared_ptr<TiffReader> reader, const PageTreatment& treatment)
    : m_reader(std::move(reader))
    , m_treatment(treatment)
{
}

std::unique_ptr<TiffDocument> TiffDocument::clone() const
{
    auto reader = std::make_shared<TiffReader>(m_reader->sharedDocument());
    return std::unique_ptr<TiffDocument>(new TiffDocument(std::move(reader), m_treatment));
}

QString TiffDocument::path() const { return m_reader->document().path(); }

const FileState& TiffDocument::stateAtOpening() const
{
    return m_reader->document().stateAtOpening();
}

bool TiffDocument::hasChanged() const { return m_reader->document().hasChanged(); }

int TiffDocument::pageCount() const { return m_reader->document().pageCount(); }

FileDigest TiffDocument::digest() const
{
    const OpenTiffFile& file = m_reader->document();
    return digestOf(file.sizeBytes(), [&](std::uint64_t offset, std::span<std::uint8_t> bytes) {
        if (StopScope::isStopped()) // the file may be large and far away
            throw std::runtime_error("stopped");
        file.readAt(offset, bytes);
    });
}

PageImage TiffDocument::page(int index) const
{
    return PageImage(std::make_shared<TiffPage>(m_reader, index, m_treatment));
}

QString TiffDocument::chainFault() const { return m_reader->document().chainFault(); }

std::optional<PageImage> createImageWithName(const QString& name)
{
    const QFileInfo info(name);
    const QString path = pathForResource(info.completeBaseName(), info.suffix());
    if (path.isNull())
        return std::nullopt;
    try {
        return TiffDocument(path).page(0);
    } catch (const std::exception&) {
        return std::nullopt; // the caller is told by the missing image
    }
}

} // namespace pagestack
