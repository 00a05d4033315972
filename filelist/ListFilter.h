#pragma once

#include "filelist/RowStatus.h"

#include <QList>
#include <QString>

namespace pagestack {

class FileItem;

/// What the rows of a list are narrowed to, as the user types it: words that a file's name has, or
/// its whole path for a word with a slash, whatever their case, and terms such as pages>5,
/// size<=2MB and type=tiff; all of them must hold. A minus before one turns it round, quotation
/// marks keep blanks in a word. A term that is not complete yet narrows nothing.
class ListFilter
{
public:
    ListFilter() = default;
    ListFilter(const QString& text, RowGroup group);

    bool isEmpty() const { return m_terms.isEmpty() && m_group == RowGroup::All; }
    RowGroup group() const { return m_group; }
    bool accepts(const FileItem& item, RowStatus::State state) const;

private:
    enum class Subject { Name, Path, Type, Pages, Size };
    struct Term
    {
        Subject subject = Subject::Name;
        bool isExcluded = false;
        QString text {};
        QString relation {}; ///< of the number: "<", "<=", "=", ">=" or ">"
        double number = 0;
    };

    void addWord(QString word);
    static bool holds(const Term& term, const FileItem& item);

    QList<Term> m_terms;
    RowGroup m_group = RowGroup::All;
};

} // namespace pagestack
