#pragma once

#include "filelist/FileDates.h"

#include <QDateTime>
#include <QList>
#include <QString>
#include <QUrl>
#include <QVariant>

#include <memory>

namespace pagestack {

/// One source file of the file list.
///
/// Page count and size are taken once, when the URL is set; names, texts and dates are computed at
/// every call, the dates from the file system. Symbolic links are followed: size, pages and dates
/// are those of the link's target. A value that cannot be read is 0 or empty. One thread at a time
/// may change an item; several may read it meanwhile if none changes it.
class FileItem
{
    struct Made ///< only this class makes items
    {
    };

public:
    explicit FileItem(Made) { }
    FileItem(const FileItem& other, Made);
    FileItem(const FileItem&) = delete;
    ~FileItem();
    FileItem& operator=(const FileItem&) = delete;

    /// An item that knows of the file only which one it is, to be compared with others.
    static std::shared_ptr<const FileItem> unread(const QUrl& url);
    /// A ticked item for the file, or null when `url` is missing or is not a file URL.
    static std::shared_ptr<FileItem> initWithURL(const QUrl& url);

    /// The same as it is now, for another thread.
    std::shared_ptr<FileItem> clone() const;

    /// False when the path of `url` has bytes that are not text: toLocalFile() would be the path of
    /// another file.
    static bool hasTextPath(const QUrl& url);

    QUrl filePath() const;
    QString localFile() const; ///< of filePath()
    const QString& path() const { return m_path; } ///< localFile() without a slash at the end
    /// The same for equal URLs alone; that of most is their path.
    QString identity() const;
    quint32 identityHash() const { return m_identityHash; }
    /// Takes size and page count anew; reads the file's directories. The size stays as it was when
    /// the file cannot be looked up.
    void setFilePath(const QUrl& url);

    /// Whether the file takes part in the next conversion.
    bool isSelected() const { return m_isSelected; }
    void setIsSelected(bool isSelected) { m_isSelected = isSelected; }

    /// The folder by which the file came into the list, absolute; empty when it was named itself.
    QString foundIn() const { return m_foundIn; }
    void setFoundIn(const QString& folder) { m_foundIn = folder; }

    int pages() const { return m_pages; } ///< 0 when they could not be counted
    /// Those that are thumbnails or masks of others, counted from 1, ascending.
    const QList<int>& reducedPages() const { return rare().reducedPages; }
    /// Why there are no pages, or why some may be missing; empty when all is well.
    const QString& fault() const { return rare().fault; }
    bool isMissing() const { return rare().isMissing; } ///< nothing was at the path

    /// The pages that are to be converted, as PageChoice reads it; empty: as the run says.
    QString pageChoice() const { return rare().pageChoice; }
    void setPageChoice(const QString& choice);

    int size() const { return m_size; } ///< bytes allocated on disk, INT_MAX for all above it

    QString name() const; ///< file name with extension
    QString location() const; ///< path of the containing folder
    QString type() const; ///< extension as written, without the dot
    QString sizeInKB() const; ///< sizeText() of `size`
    QDateTime dateModified() const { return dates().modified; }
    QDateTime dateCreated() const { return dates().created; }
    QDateTime dateAccessed() const { return dates().accessed; }
    FileDates dates() const; ///< all of them for one look at the file

    /// True when both items have the same URL; two paths of one file differ. `other` may be null.
    bool isEqual(const FileItem* other) const;
    friend bool operator==(const FileItem& a, const FileItem& b) { return a.isEqual(&b); }

    /// The value of the column `identifier`, compared without regard to case: a bool for the check
    /// mark, an int for the pages, else a text; "" for an unknown column. A date that cannot be
    /// read is a null text.
    QVariant displayField(const QString& identifier) const;

    /// A size as the list shows it: "0 KB", "1000 KB", " 1.5 MB", "12 MB". A unit is a thousand of
    /// the one below, and widths below four signs are filled with blanks from the left.
    static QString sizeText(int bytes);
    /// A date as the list shows it, null for one that is invalid.
    static QString columnText(const QDateTime& date);

private:
    /// What few files of a list have.
    struct Rare
    {
        QUrl url; ///< that says more than its path
        QString pageChoice { QLatin1String("") };
        QList<int> reducedPages;
        QString fault;
        bool isMissing = false;
    };

    const Rare& rare() const;
    Rare& madeRare();
    void takeURL(const QUrl& url);

    // Of the URL the path alone is kept, which is all that work on the list looks at. A QUrl takes
    // more room than everything else of an item.
    bool m_isSelected = true;
    quint32 m_identityHash = 0;
    QString m_path;
    QString m_foundIn;
    std::unique_ptr<Rare> m_rare; ///< null: as by default
    int m_pages = 0;
    int m_size = 0;
};

} // namespace pagestack
