#include "mainwindow/settings/MoreTab.h"

#include "engine/log/ShownReason.h"
#include "engine/plan/OutputNames.h"
#include "mainwindow/settings/RunChoices.h"

#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QScopedValueRollback>

#include <algorithm>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    constexpr int sectionGap = 8;

    QString sentence(const QString& text) { return text.left(1).toUpper() + text.mid(1); }

    QString sentence(const OptionError& error)
    {
        return sentence(shownReason(QString::fromUtf8(error.what())));
    }

    /// A mark for a key beside others of the pane would be taken by chance.
    QString withoutKey(QString text) { return text.replace(u'&', u"&&"_s); }

    QLabel* noteBelow(QGridLayout& grid)
    {
        auto* note = new QLabel;
        note->setWordWrap(true);
        note->setTextFormat(Qt::PlainText);
        grid.addWidget(note, grid.rowCount(), 0, 1, 2);
        return note;
    }

    void addHeading(QGridLayout& grid, const QString& text)
    {
        if (grid.rowCount() > 1) // a grid begins with a row that holds nothing
            grid.setRowMinimumHeight(grid.rowCount(), sectionGap);
        auto* heading = new QLabel(text);
        QFont font = heading->font();
        font.setBold(true);
        heading->setFont(font);
        grid.addWidget(heading, grid.rowCount(), 0, 1, 2);
    }

} // namespace

void MoreTab::bind(RunChoices& choices, const Elsewhere& elsewhere)
{
    m_choices = &choices;
    auto* page = new QWidget;
    auto* own = new QGridLayout(page);
    own->setColumnStretch(1, 1);
    setWidget(page);
    QString section;
    for (const ConversionOptionRow& row : conversionOptionTable()) {
        if (row.label.isEmpty())
            continue;
        QGridLayout* grid = elsewhere(row);
        if (grid == nullptr && section != row.section) {
            addHeading(*own, row.section);
            section = row.section;
        } else if (grid != nullptr && grid->isEmpty()) {
            addHeading(*grid, row.section);
        }
        grid = grid == nullptr ? own : grid;
        m_fields.push_back(makeField(row, *grid));
        if (row.name == u"name")
            m_nameFault = noteBelow(*grid);
    }
    own->setRowStretch(own->rowCount(), 1);
    connect(&choices, &RunChoices::changed, this, &MoreTab::follow);
    follow();
}

MoreTab::Field MoreTab::makeField(const ConversionOptionRow& row, QGridLayout& grid)
{
    Field field { &row, nullptr, nullptr, nullptr };
    const QString label = withoutKey(row.label);
    if (row.isFlag()) {
        auto* box = new QCheckBox(label);
        connect(box, &QCheckBox::toggled, this, [this, &row](bool isOn) {
            m_choices->setText(row, isOn ? u"true"_s : u"false"_s);
        });
        field.control = box;
        grid.addWidget(box, grid.rowCount(), 0, 1, 2);
    } else {
        field.caption = new QLabel(label + u':');
        grid.addWidget(field.caption, grid.rowCount(), 0);
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
        grid.addWidget(field.control, grid.rowCount() - 1, 1);
    }
    field.control->setObjectName(row.name);
    field.control->setToolTip(sentence(row.meaning));
    if (auto* line = qobject_cast<QLineEdit*>(field.control)) {
        field.fault = noteBelow(grid);
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
        const bool isOfFormat = idleWith(all, field.row->name).isEmpty();
        for (QWidget* part : { field.control, static_cast<QWidget*>(field.caption) }) {
            if (part == nullptr)
                continue;
            part->setEnabled(hasEffect);
            part->setVisible(isOfFormat);
        }
        if (field.fault != nullptr)
            field.fault->setVisible(isOfFormat && !field.fault->text().isEmpty());
    }
    try {
        exampleName(all);
        showNameFault({});
    } catch (const OptionError& error) {
        showNameFault(sentence(error));
    }
}

void MoreTab::forgetFaults()
{
    for (const Field& field : m_fields)
        if (field.fault != nullptr)
            field.fault->clear();
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
               line->text() != text && line != m_typedIn && field.fault->text().isEmpty()) {
        line->setText(text);
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
        reason = sentence(error);
    }
    if (field.fault != nullptr) {
        field.fault->setText(reason);
        field.fault->setVisible(!reason.isEmpty());
    }
    return reason;
}

QString MoreTab::commit()
{
    m_faulty = nullptr;
    for (const Field& field : m_fields) {
        const auto* line = qobject_cast<QLineEdit*>(field.control);
        if (line == nullptr || !line->isEnabled())
            continue;
        if (QString reason = take(field, line->text()); !reason.isEmpty()) {
            m_faulty = field.control;
            return reason;
        }
    }
    try {
        exampleName(m_choices->all());
        return {};
    } catch (const OptionError& error) {
        const auto field = std::ranges::find(m_fields, u"name"_s,
                                             [](const Field& each) { return each.row->name; });
        m_faulty = field == m_fields.end() ? nullptr : field->control;
        return sentence(error);
    }
}

void MoreTab::showNameFault(const QString& text)
{
    m_nameFault->setText(text);
    m_nameFault->setVisible(!text.isEmpty());
}

} // namespace pagestack
