#pragma once

#include <QScrollArea>

#include <vector>

class QLabel;
class QVBoxLayout;

namespace pagestack {

class RunChoices;
struct ConversionOptionRow;

/// The tab of the choices that stand on no other one: a control for each option of the table that
/// has a label. Main thread.
class MoreTab : public QScrollArea
{
    Q_OBJECT

public:
    explicit MoreTab(QWidget* parent = nullptr);

    /// Makes the controls, which change `choices` and follow it. To be called once; it outlives the
    /// tab.
    void bind(RunChoices& choices);

    /// Shows the choices, and enables those that have an effect.
    void follow();

    /// Shows the choices also where something else is typed that could not be taken.
    void forgetFaults();

    /// Takes over what is typed but not committed yet. Returns what is wrong with the first field
    /// that holds what its option cannot take, which gets the keys; empty: all are well.
    QString commit();

    /// Shows below the names what they would be: a line for each.
    void setExample(const QString& text);

private:
    struct Field
    {
        const ConversionOptionRow* row;
        QWidget* control; ///< tick box, pop-up or text field
        QLabel* caption; ///< null: a tick box has its own
        QLabel* fault; ///< null: nothing wrong can be entered
    };

    Field makeField(const ConversionOptionRow& row, QVBoxLayout& layout);
    void show(const Field& field, const QString& text) const;
    QString take(const Field& field, const QString& text);

    RunChoices* m_choices = nullptr;
    std::vector<Field> m_fields;
    const QWidget* m_typedIn = nullptr; ///< the control whose text is being taken
    QLabel* m_example = nullptr; ///< null where no option has one
};

} // namespace pagestack
