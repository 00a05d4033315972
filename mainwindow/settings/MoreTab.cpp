#include "mainwindow/settings/MoreTab.h"

#include "engine/plan/OutputNames.h"
#include "mainwindow/settings/RunChoices.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QScopedValueRollback>
#include <QVBoxLayout>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    QString sentence(const QString& text) { return text.left(1).toUpper() + text.mid(1); }

    /// A mark for a key beside others of the pane would be taken by chance.
    QString withoutKey(QString text) { return text.replace(u'&', u"&&"_s); }

    QLabel* noteBelow(QVBoxLayout& layout)
    {
        auto* note = new QLabel;
        note->setWordWrap(true);
        note->setTextFormat(Qt::PlainText);
        note->hide();
        layout.addWidget(note);
        return note;
    }

} // namespace

MoreTab::MoreTab(QWidget* parent)
    : QScrollArea(parent)
{
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
}

void MoreTab::bind(RunChoices& choices)
{
    m_choices = &choices;
    auto* page = new QWidget;
    auto* layout = new QVBoxLayout(page);
    setWidget(page);
    // The tab's own colour.
    viewport()->setAutoFillBackground(false);
    page->setAutoFillBackground(false);
    QGroupBox* box = nullptr;
    for (const ConversionOptionRow& row : conversionOptionTable()) {
        if (row.label.isEmpty())
            continue;
        if (box == nullptr || box->title() != row.section) {
            box = new QGroupBox(row.section);
            new QVBoxLayout(box);
            layout->addWidget(box);
        }
        auto& inner = *static_cast<QVBoxLayout*>(box->layout());
        m_fields.push_back(makeField(row, inner));
        if (row.name == u"name")
            m_example = noteBelow(inner);
    }
    layout->addStretch();
    connect(&choices, &RunChoices::changed, this, &MoreTab::follow);
    follow();
}

MoreTab::Field MoreTab::makeField(const ConversionOptionRow& row, QVBoxLayout& layout)
{
    Field field { &row, nullptr, nullptr, nullptr };
    const QString label = withoutKey(row.label);
    if (row.isFlag()) {
        auto* box = new QCheckBox(label);
        connect(box, &QCheckBox::toggled, this, [this, &row](bool isOn) {
            m_choices->setText(row, isOn ? u"true"_s : u"false"_s);
        });
        field.control = box;
    } else {
        field.caption = new QLabel(label + u':');
        layout.addWidget(field.caption);
        if (!row.choices.empty()) {
            auto* popup = new QComboBox;
            for (const auto& [text, shown] : row.choices)
                popup->addItem(shown, text);
            popup->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
            field.control = popup;
        } else {
            auto* line = new QLineEdit;
            line->setPlaceholderText(row.placeholder);
            line->setClearButtonEnabled(true);
            field.control = line;
        }
        field.caption->setBuddy(field.control);
    }
    field.control->setObjectName(row.name);
    field.control->setToolTip(sentence(row.meaning));
    layout.addWidget(field.control);
    if (auto* line = qobject_cast<QLineEdit*>(field.control)) {
        field.fault = noteBelow(layout);
        field.fault->setObjectName(row.name + u"-fault"_s);
        connect(line, &QLineEdit::textChanged, this,
                [this, field](const QString& text) { take(field, text); });
    } else if (auto* popup = qobject_cast<QComboBox*>(field.control)) {
        connect(popup, &QComboBox::activated, this,
                [this, field, popup] { take(field, popup->currentData().toString()); });
    }
    return field;
}

void MoreTab::follow()
{
    const ConversionOptions all = m_choices->all();
    for (const Field& field : m_fields) {
        show(field, field.row->text(all, *field.row));
        const bool hasEffect = m_choices->hasEffect(*field.row);
        field.control->setEnabled(hasEffect);
        if (field.caption != nullptr)
            field.caption->setEnabled(hasEffect);
    }
    try {
        setExample(tr("Example: %1").arg(exampleName(all)));
    } catch (const OptionError& error) {
        setExample(sentence(QString::fromUtf8(error.what())));
    }
}

void MoreTab::forgetFaults()
{
    for (const Field& field : m_fields)
        if (field.fault != nullptr)
            field.fault->hide();
    follow();
}

void MoreTab::show(const Field& field, const QString& text) const
{
    const QSignalBlocker silent(field.control);
    if (auto* box = qobject_cast<QCheckBox*>(field.control)) {
        box->setChecked(text == u"true");
    } else if (auto* popup = qobject_cast<QComboBox*>(field.control)) {
        if (popup->findData(text) < 0) // from a preset
            popup->addItem(text, text);
        popup->setCurrentIndex(popup->findData(text));
    } else if (auto* line = qobject_cast<QLineEdit*>(field.control);
               line->text() != text && line != m_typedIn && field.fault->isHidden()) {
        line->setText(text);
        field.fault->hide();
    }
}

/// Returns what is wrong with `text`; empty: it was taken.
QString MoreTab::take(const Field& field, const QString& text)
{
    const QScopedValueRollback typing(m_typedIn, static_cast<const QWidget*>(field.control));
    QString reason;
    try {
        m_choices->setText(*field.row, text);
    } catch (const OptionError& error) {
        reason = sentence(QString::fromUtf8(error.what()));
    }
    if (field.fault != nullptr) {
        field.fault->setText(reason);
        field.fault->setVisible(!reason.isEmpty());
    }
    return reason;
}

QString MoreTab::commit()
{
    for (const Field& field : m_fields) {
        const auto* line = qobject_cast<QLineEdit*>(field.control);
        if (line == nullptr || !line->isEnabled())
            continue;
        if (QString reason = take(field, line->text()); !reason.isEmpty()) {
            field.control->setFocus();
            return reason;
        }
    }
    try {
        exampleName(m_choices->all());
        return {};
    } catch (const OptionError& error) {
        return sentence(QString::fromUtf8(error.what()));
    }
}

void MoreTab::setExample(const QString& text)
{
    if (m_example == nullptr)
        return;
    m_example->setText(text);
    m_example->setVisible(!text.isEmpty());
}

} // namespace pagestack
