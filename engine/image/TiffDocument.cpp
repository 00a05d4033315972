#include "engine/image/TiffDocument.h"

#include "engine/image/decode/TiffPage.h"

#include <stdexcept>
#include <string>

namespace pagestack {

TiffDocument::TiffDocument(const QString& path)
    : m_file(std::make_shared<TiffFile>(path))
{
}

TiffDocument::TiffDocument(std::shared_ptr<TiffFile> file)
    : m_file(std::move(file))
{
}

TiffDocument::~TiffDocument() = default;

std::unique_ptr<TiffDocument> TiffDocument::clone() const
{
    return std::unique_ptr<TiffDocument>(new TiffDocument(m_file->clone()));
}

QString TiffDocument::path() const { return m_file->path(); }

const FileState& TiffDocument::stateAtOpening() const { return m_file->stateAtOpening(); }

int TiffDocument::pageCount() const { return static_cast<int>(m_file->chain().offsets.size()); }

PageImage TiffDocument::page(int index) const
{
    if (index < 0 || index >= pageCount())
        throw std::out_of_range("index " + std::to_string(index) + " beyond bounds [0 .. "
                                + std::to_string(pageCount() - 1) + "]");
    return PageImage(std::make_shared<TiffPage>(m_file, index));
}

QString TiffDocument::chainFault() const { return m_file->chain().fault; }

} // namespace pagestack
