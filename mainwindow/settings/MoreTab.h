#pragma once

#include "mainwindow/widgets/TallPage.h"

#include <functional>
#include <vector>

class QLabel;
class QGridLayout;

namespace pagestack {

class RunChoices;
struct ConversionOptionRow;

/// The choices beside the settings: a control for each option of the table that has a label, on
/// this tab or where another one has a place for it. Main thread.
class MoreTab : public TallPage
{
    Q_OBJECT

public:
    using TallPage::TallPage;

    /// Where an option stands that is not on this tab; null: it is.
    using Elsewhere = std::function<QGridLayout*(const ConversionOptionRow& row)>;

    /// Makes the controls, which change `choices` and follow it. To be called once; it outlives the
    /// tab.
    void bind(RunChoices& choices, const Elsewhere& elsewhere);

    /// Shows the choices that the format has, and enables those that have an effect.
    void follow();

    /// Shows the choices also where something else is typed that could not be taken.
    void forgetFaults();

    /// Takes over what is typed but not committed yet. Returns what is wrong with the first field
    /// that holds what its option cannot take; empty: all are well.
    QString commit();
    /// That field; null when all were well.
    QWidget* faultyControl() const { return m_faulty; }

private:
    struct Field
    {
        const ConversionOptionRow* row;
        QWidget* control; ///< tick box, pop-up or text field
        QLabel* caption; ///< null: a tick box has its own
        QLabel* fault; ///< null: nothing wrong can be entered
    };

    Field makeField(const ConversionOptionRow& row, QGridLayout& grid);
    void show(const Field& field, const QString& text) const;
    void showNameFault(const QString& text);
    QString take(const Field& field, const QString& text);

    RunChoices* m_choices = nullptr;
    std::vector<Field> m_fields;
    const QWidget* m_typedIn = nullptr; ///< the control whose text is being taken
    QWidget* m_faulty = nullptr;
    QLabel* m_nameFault = nullptr; ///< what no single field can say of the names
};

} // namespace pagestack
