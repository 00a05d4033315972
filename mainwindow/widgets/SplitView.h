#pragma once

#include <QSplitter>

namespace pagestack {

/// A splitter whose subviews can be put away and brought back. A subview that comes back has the
/// width it had; the others take up what it leaves and give what it needs.
class SplitView : public QSplitter
{
    Q_OBJECT

public:
    using QSplitter::QSplitter;

    /// Hides the subview at `index`, its handle too, or shows it. An index that no subview has does
    /// nothing.
    void setSubviewCollapsed(int index, bool collapsed);
    [[nodiscard]] bool isSubviewCollapsed(int index) const;
};

} // namespace pagestack
