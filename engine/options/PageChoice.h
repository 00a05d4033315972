#pragma once

#include <QList>
#include <QString>

#include <vector>

namespace pagestack {

/// Which pages of a file are meant: "1,3-5,-1". Parts between commas are a page, "3"; some that
/// follow each other, "3-5"; or all from one on, "3-". Pages count from 1, or with a "-" from the
/// end: "-1" is the last page, "-3-" are the last three, "2--2" all but the first and the last.
class PageChoice
{
public:
    /// Every page.
    PageChoice() = default;

    /// An empty text, blanks aside, means every page. Throws OptionError, which names the option
    /// "pages" and the part that is none.
    explicit PageChoice(const QString& text);

    bool isEvery() const { return m_parts.empty(); }

    /// Those of a file with `count` pages that has them, ascending, each once.
    QList<int> pages(int count) const;

    /// What a file with `count` pages lacks of it: "page 9 asked for, the file has 3"; null when it
    /// has all.
    QString missing(int count) const;

private:
    struct Part
    {
        QString text;
        int first = 1; ///< below 0: from the end
        int last = 1; ///< the same as `first` for one page
    };

    static Part part(const QString& choice, const QString& text);

    std::vector<Part> m_parts;
};

} // namespace pagestack
