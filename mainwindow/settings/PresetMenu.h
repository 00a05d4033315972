#pragma once

#include <QList>
#include <QObject>

#include <functional>

class QMenu;
class QPushButton;

namespace pagestack {

class RunChoices;
struct ConversionOptions;
struct Preset;
struct Services;

/// The menu of the named sets of options: takes them over, saves, imports, exports and removes
/// them. Main thread.
class PresetMenu : public QObject
{
    Q_OBJECT

public:
    /// Gives `button` its menu. All outlive it.
    /// `commit` takes over what is typed in the pane, and returns what is wrong with it; empty:
    /// nothing.
    PresetMenu(QPushButton& button, RunChoices& choices, const Services& services,
               std::function<QString()> commit);

signals:
    /// A preset was taken over, whatever was typed.
    void presetTaken();

private:
    void fill();
    void addPresets(const QList<Preset>& presets);
    void askForName();
    void save(const Preset& preset);
    void importFile();
    void exportFile();
    bool isCommitted();
    ConversionOptions current() const;
    bool tellOfFaults(const std::function<void()>& work);

    QPushButton& m_button;
    RunChoices& m_choices;
    const Services& m_services;
    const std::function<QString()> m_commit;
    QMenu& m_menu;
};

} // namespace pagestack
