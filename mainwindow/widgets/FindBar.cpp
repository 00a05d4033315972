#include "mainwindow/widgets/FindBar.h"

#include "mainwindow/widgets/SymbolicIcon.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QTimer>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace pagestack {

namespace {

    constexpr int typingPauseMs = 120;
    constexpr int fieldDigits = 32;

} // namespace

FindBar::FindBar(QWidget* parent)
    : QWidget(parent)
    , m_field(new QLineEdit(this))
    , m_found(new QLabel(this))
{
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    auto* title = new QLabel(tr("&Find:"), this);
    title->setBuddy(m_field);
    m_field->setObjectName(u"searchField"_s);
    m_field->setPlaceholderText(tr("Part of a file name"));
    m_field->setToolTip(tr("Highlights the files with this in their names; with a slash, in their "
                           "paths. What is converted stays as it is."));
    m_field->setAccessibleName(tr("Find files by name"));
    m_field->setMaximumWidth(fieldDigits * fontMetrics().horizontalAdvance(u'0'));
    m_found->setObjectName(u"foundLabel"_s);
    row->addWidget(title);
    row->addWidget(m_field, 1);
    QToolButton* previous = addButton(u"move-up"_s, u"findPreviousButton"_s, tr("Previous"));
    QToolButton* next = addButton(u"move-down"_s, u"findNextButton"_s, tr("Next"));
    row->addWidget(m_found);
    row->addStretch(1);
    QToolButton* close = addButton(u"close"_s, u"findCloseButton"_s, tr("Close"));

    auto* pause = new QTimer(this);
    pause->setSingleShot(true);
    pause->setInterval(typingPauseMs);
    connect(m_field, &QLineEdit::textChanged, pause, qOverload<>(&QTimer::start));
    connect(pause, &QTimer::timeout, this, [this] { emit searched(m_field->text()); });
    connect(previous, &QToolButton::clicked, this, &FindBar::previousRequested);
    connect(next, &QToolButton::clicked, this, &FindBar::nextRequested);
    connect(close, &QToolButton::clicked, this, &FindBar::closed);
    connect(this, &FindBar::closed, this, &QWidget::hide);
    hide();
}

QToolButton* FindBar::addButton(const QString& icon, const QString& name, const QString& text)
{
    auto* button = new QToolButton(this);
    button->setObjectName(name);
    button->setAutoRaise(true);
    button->setToolTip(text);
    button->setAccessibleName(text);
    button->setIcon(symbolicIcon(icon));
    layout()->addWidget(button);
    return button;
}

QString FindBar::text() const { return m_field->text(); }

void FindBar::begin()
{
    show();
    m_field->setFocus(Qt::ShortcutFocusReason);
    m_field->selectAll();
}

void FindBar::showFound(qsizetype current, qsizetype count)
{
    if (count < 0)
        m_found->clear();
    else if (count == 0)
        m_found->setText(tr("No file has it"));
    else
        m_found->setText(tr("%1 of %2").arg(current).arg(count));
}

void FindBar::keyPressEvent(QKeyEvent* event)
{
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (event->key() == Qt::Key_Escape)
        emit closed();
    else if (isReturn && event->modifiers().testFlag(Qt::ShiftModifier))
        emit previousRequested();
    else if (isReturn)
        emit nextRequested();
    else
        QWidget::keyPressEvent(event);
}

} // namespace pagestack
