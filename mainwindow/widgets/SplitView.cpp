#include "mainwindow/widgets/SplitView.h"

namespace pagestack {

void SplitView::setSubviewCollapsed(int index, bool collapsed)
{
    QWidget* const subview = widget(index);
    if (subview != nullptr && subview->isHidden() != collapsed)
        subview->setVisible(!collapsed);
}

bool SplitView::isSubviewCollapsed(int index) const
{
    const QWidget* const subview = widget(index);
    return subview != nullptr && subview->isHidden();
}

} // namespace pagestack
