#include "mainwindow/run/RunStrip.h"

#include "mainwindow/widgets/ElidedLabel.h"

#include <QHBoxLayout>
#include <QProgressBar>
#include <QPushButton>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr int barDigits = 12; ///< its width

} // namespace

RunStrip::RunStrip(QWidget& bar)
    : m_place(bar)
    , m_layout(new QHBoxLayout(this))
    , m_bar(new QProgressBar(this))
    , m_label(new ElidedLabel(this))
    , m_details(new QPushButton(tr("Details"), this))
{
    setObjectName(u"runStrip"_s);
    m_bar->setObjectName(u"runStripBar"_s);
    m_bar->setRange(0, 1000);
    m_bar->setFixedWidth(barDigits * fontMetrics().horizontalAdvance(u'0'));
    m_bar->setAccessibleName(tr("Progress"));
    m_label->setObjectName(u"runStripLabel"_s);
    m_details->setObjectName(u"runDetailsBtn"_s);
    m_details->setToolTip(tr("Brings the sheet of the conversion back"));
    m_layout->setContentsMargins(0, 0, 0, 0);
    m_layout->addWidget(m_bar);
    m_layout->addWidget(m_label, 1);
    m_layout->addWidget(m_details);
    connect(m_details, &QAbstractButton::clicked, this, &RunStrip::detailsRequested);
    bar.layout()->addWidget(this);
}

void RunStrip::addButton(const QString& name, QAbstractButton& original)
{
    auto* button = new QPushButton(this);
    button->setObjectName(name);
    button->setToolTip(original.toolTip());
    button->setCheckable(original.isCheckable());
    connect(button, &QAbstractButton::clicked, &original, [this, button, &original] {
        original.click();
        follow(*button, original);
    });
    m_layout->insertWidget(m_layout->indexOf(m_details), button);
    m_buttons.append({ button, &original });
}

void RunStrip::follow(QAbstractButton& button, const QAbstractButton& original) const
{
    button.setText(original.text());
    button.setChecked(original.isChecked());
    button.setVisible(!original.isHidden() && original.isEnabled());
}

void RunStrip::setShown(bool isShown) { m_place.setVisible(isShown); }

void RunStrip::update(const QString& text, int permille)
{
    m_label->setText(text);
    m_bar->setValue(permille);
    for (const auto& [button, original] : m_buttons)
        follow(*button, *original);
}

} // namespace pagestack
