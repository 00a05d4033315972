#include "mainwindow/run/ProblemList.h"

#include "engine/log/ShownReason.h"

#include <QAction>
#include <QClipboard>
#include <QFileInfo>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QTextDocument>

#include <algorithm>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr int pathRole = Qt::UserRole;

    enum ProblemColumn { FileColumn, PageColumn, ReasonColumn };

} // namespace

ProblemList::ProblemList(QWidget* parent)
    : QTreeWidget(parent)
{
    setHeaderLabels({ tr("File"), tr("Page"), tr("What happened") });
    setColumnWidth(FileColumn, 24 * fontMetrics().horizontalAdvance(u'0'));
    setColumnWidth(
        PageColumn,
        std::max(6 * fontMetrics().horizontalAdvance(u'0'), header()->sectionSizeHint(PageColumn)));
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setSelectionMode(ExtendedSelection);
    setContextMenuPolicy(Qt::ActionsContextMenu);
    setTextElideMode(Qt::ElideMiddle);
    const auto addCommand = [this](const QString& text, const auto& command) {
        auto* action = new QAction(text, this);
        connect(action, &QAction::triggered, this, command);
        addAction(action);
    };
    addCommand(tr("Copy"), [this] { copy(true); });
    addCommand(tr("Copy All"), [this] { copy(false); });
    const auto requestFile = [this] {
        if (const QTreeWidgetItem* item = currentItem())
            emit fileRequested(item->data(FileColumn, pathRole).toString());
    };
    addCommand(tr("Show in List"), requestFile);
    connect(this, &QTreeWidget::itemDoubleClicked, this, requestFile);
}

void ProblemList::add(const Diagnostic& diagnostic)
{
    if (++m_count > mostRows)
        return;
    const QString reason = shownReason(diagnostic.reason);
    const bool isWarning = diagnostic.severity == Diagnostic::Severity::Warning;
    auto* item
        = new QTreeWidgetItem(this,
                              { QFileInfo(diagnostic.sourcePath).fileName(),
                                diagnostic.page > 0 ? QString::number(diagnostic.page) : QString(),
                                isWarning ? tr("Warning: %1").arg(reason) : reason });
    item->setData(FileColumn, pathRole, diagnostic.sourcePath);
    item->setToolTip(FileColumn, Qt::convertFromPlainText(diagnostic.sourcePath));
    item->setToolTip(
        ReasonColumn,
        Qt::convertFromPlainText((reason + u'\n' + shownReason(diagnostic.detail)).trimmed()));
}

void ProblemList::removeAll()
{
    clear();
    m_count = 0;
}

void ProblemList::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Copy))
        copy(true); // the base class would copy one cell
    else
        QTreeWidget::keyPressEvent(event);
}

QStringList ProblemList::lines(bool onlySelected) const
{
    QStringList lines;
    for (int row = 0; row < topLevelItemCount(); ++row) {
        const QTreeWidgetItem& item = *topLevelItem(row);
        if (onlySelected && !item.isSelected())
            continue;
        QStringList fields { item.data(FileColumn, pathRole).toString(), item.text(PageColumn),
                             item.text(ReasonColumn) };
        for (QString& field : fields) // names may hold what parts fields and lines
            field.replace(u'\t', u' ').replace(u'\n', u' ');
        lines.append(fields.join(u'\t'));
    }
    return lines;
}

void ProblemList::copy(bool onlySelected) const
{
    if (const QStringList text = lines(onlySelected); !text.isEmpty())
        QGuiApplication::clipboard()->setText(text.join(u'\n'));
}

QString ProblemList::allText() const
{
    QStringList text = lines(false);
    if (const qint64 left = m_count - mostRows; left > 0)
        text.append(tr("%n more are in the log only.", nullptr, static_cast<int>(left)));
    return text.join(u'\n') + u'\n';
}

} // namespace pagestack
