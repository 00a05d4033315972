#pragma once

#include <QMap>
#include <QTemporaryDir>

namespace pagestack {

/// A folder of a test's own and what happens to the files in it. In all texts '~' stands for a
/// blank in a name.
class TestFolder
{
public:
    QString path(const QString& name) const { return m_folder.filePath(name); }

    /// Makes what `list` names, separated by blanks, with the folders above: "b>a.tif" is a
    /// symbolic link to "a.tif", "c" a file that is no image, "d/" a folder, "a.tif:WBH" a TIFF
    /// file with a page for each letter: W is whole, 47 x 33 pixels of gray, the gray being the
    /// page's number; F is a fax with a row that is too short; B is listed, but its pixels cannot
    /// be decoded; U is whole and has a tag that nobody knows; V is whole, its gray is the number
    /// and 100; T and M are whole, a thumbnail and a mask; the conversion of H takes seconds; after
    /// the last page, L lets the chain of pages lead back to the first. "d.tif&a.tif" is another
    /// name (a hard link) of
    /// "@/a.tif".
    /// '@' is this folder. Throws std::runtime_error.
    void make(const QString& list) const;

    /// From here on changes() counts.
    void remember() { m_before = entries(); }
    /// What is new or different by now, sorted, and what has gone with a '-' before its name: "out/
    /// out/a1.png". TIFF files show the gray of the first pixel and the value of the tag
    /// Compression of each page, read by the codec library itself: "a.tiff[1/5,2/5]".
    QString changes() const;
    /// All that is there, with the contents.
    QMap<QString, QByteArray> entries() const;

private:
    QTemporaryDir m_folder;
    QMap<QString, QByteArray> m_before;
};

/// `found`, in which a line of `expected` that ends in '*' takes the place of each line that begins
/// in the same way and is longer. So a comparison of the result allows for any such end.
QString withStars(QString found, const QString& expected);

} // namespace pagestack
