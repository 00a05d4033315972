#pragma once

#include <QCoreApplication>

namespace pagestack {

struct PageFacts;

/// The facts of a page as lines for people to read, numbers as their country writes them.
class PageFactsText
{
    Q_DECLARE_TR_FUNCTIONS(PageFactsText)

public:
    static QString of(const PageFacts& facts);

private:
    static QString extent(const PageFacts& facts);
    static QString depth(const PageFacts& facts);
};

} // namespace pagestack
