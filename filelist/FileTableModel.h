#pragma once

#include "filelist/FileList.h"
#include "filelist/RowStatus.h"
#include "filelist/ShownDates.h"
#include "filelist/ShownThumbnails.h"
#include "filelist/SortOrder.h"

#include <QAbstractTableModel>
#include <QHash>
#include <QIcon>

#include <functional>

namespace pagestack {

/// The file list as a table: a view of a FileList, which must outlive it.
///
/// While a model is there, the list is changed through it only, so that views follow. A change of
/// many rows is one operation and as few signals as possible. Main thread.
class FileTableModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column {
        IsSelected,
        Name,
        Status,
        Pages,
        PagesToConvert,
        Size,
        Type,
        Location,
        DateModified,
        DateCreated,
        DateAccessed,
        Pixels, ///< of the first page
        ColumnCount,
    };

    enum class Mark {
        Check,
        Uncheck,
        Invert,
    };

    explicit FileTableModel(FileList& files, const ReadDates& readDates = &FileItem::dates);

    /// "isselected", "name", "status", "pages", "pagesToConvert", "sizeInKB", "type", "location",
    /// "dateModified", "dateCreated", "dateAccessed", "pixels"; empty for no column.
    static QString identifier(int column);
    /// The order of a column by the property of FileItem that it shows; none for no column (-1).
    static SortOrder sortOrder(int column, Qt::SortOrder order);
    static int columnSortedBy(const QString& key); ///< -1 when no column has this key

    const FileList& files() const { return m_files; }

    /// FileItem::displayField for the identifier, which reads dates at once; "" for a row that does
    /// not exist.
    QVariant objectValue(int row, const QString& identifier) const;

    bool append(const FileList::Item& item); ///< false if an equal one is in the list already
    /// `rows` in any order; the number of rows removed. Selections of other rows stay.
    int removeItems(const QList<int>& rows);
    /// Puts each of `items` into its row of `rows`, which ascend and count the items before it in;
    /// a row past the end means the end. Items that are in the list already are left out.
    void insertItems(const FileList::Items& items, const QList<int>& rows);
    void clear();

    /// What the last run has made of the file at `path`. Views follow a moment later.
    void setStatus(const QString& path, const RowStatus& status) { m_statuses.set(path, status); }
    /// The same of all files, by path; takes back what was said before.
    void setStatuses(const QHash<QString, RowStatus>& statuses) { m_statuses.replace(statuses); }
    RowStatus status(int row) const { return m_statuses.of(*m_files.at(row)); }
    const RowStatuses& statuses() const { return m_statuses; }
    /// The picture beside the word; none without.
    void setStatusIcons(const std::function<QIcon(RowStatus::State state)>& icons)
    {
        m_statusIcons = icons;
    }

    /// Small pictures of the first pages beside the names; `ratio` as ShownThumbnails takes it.
    void showThumbnails(bool isShown, double ratio);

    int mark(const QList<int>& rows, Mark mark); ///< the number of rows changed

    /// Chooses the pages of these rows; `choice` is as FileItem::setPageChoice takes it.
    void choosePages(const QList<int>& rows, const QString& choice);
    /// The same for the files with these URLs, as far as they are in the list.
    void choosePages(const QHash<QUrl, QString>& choices);

    /// Selections and the current row stay with their items.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;
    /// Puts the item of row rows[i] into row i, as sortedRows() says; nothing when `rows` is empty.
    void reorder(const QList<int>& rows);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    /// Shows the dates of the last look at the file; dataChanged comes when they differ.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override; ///< the files' URLs
    Qt::DropActions supportedDragActions() const override { return Qt::LinkAction; }

signals:
    /// After one check mark or many have changed, once an operation.
    void checkMarksChanged();
    /// The item of row i was in row rows[i]; comes before layoutChanged.
    void reordered(const QList<int>& rows);
    /// The user has set the check mark of this row in a view; comes before checkMarksChanged.
    void checkMarkEdited(int row);
    /// The user has chosen the pages of this row in a view; they were `before`.
    void pageChoiceEdited(int row, const QString& before);
    /// What the user has typed for the pages of a row is none; the row stays as it was.
    void pageChoiceRefused(const QString& reason);

private:
    void announceColumns(Column first, Column last, const QList<int>& roles);
    QVariant shownText(const QModelIndex& index) const;
    QVariant checkMarkData(const FileItem& item, int role) const;
    void announceMarks(int first, int last);
    void announceChoices(int first, int last);
    bool takePageChoice(int row, const QString& text);

    QString toolTip(const QModelIndex& index) const;
    QVariant statusIcon(const FileItem& item) const;

    FileList& m_files;
    RowStatuses m_statuses;
    std::function<QIcon(RowStatus::State state)> m_statusIcons;
    mutable ShownDates m_shownDates; ///< looks at files that are asked for, as does the next
    mutable ShownPixels m_shownPixels;
    std::unique_ptr<ShownThumbnails> m_thumbnails; ///< null: none are shown
};

} // namespace pagestack
