#include "engine/image/TiffDocument.h"

#include "engine/image/decode/TiffPage.h"

namespace pagestack {

TiffDocument::TiffDocument(const QString& path)
    : m_reader(std::make_shared<TiffReader>(path))
{
}

TiffDocument::TiffDocument(std::shared_ptr<TiffReader> reader)
    : m_reader(std::move(reader))
{
}

TiffDocument::~TiffDocument() = default;

std::unique_ptr<TiffDocument> TiffDocument::clone() const
{
    auto reader = std::make_shared<TiffReader>(m_reader->sharedDocument());
    return std::unique_ptr<TiffDocument>(new TiffDocument(std::move(reader)));
}

QString TiffDocument::path() const { return m_reader->document().path(); }

const FileState& TiffDocument::stateAtOpening() const
{
    return m_reader->document().stateAtOpening();
}

int TiffDocument::pageCount() const { return m_reader->document().pageCount(); }

PageImage TiffDocument::page(int index) const
{
    return PageImage(std::make_shared<TiffPage>(m_reader, index));
}

QString TiffDocument::chainFault() const { return m_reader->document().chainFault(); }

} // namespace pagestack
