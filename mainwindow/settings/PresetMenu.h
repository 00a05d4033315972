#pragma once

#include <QList>
#include <QObject>

#include <functional>

class QMenu;
class QPushButton;

namespace pagestack {

class RunChoices;
struct Preset;
struct Services;

/// The menu of the named sets of options: takes them over, saves, imports, exports and removes
/// them. Main thread.
class PresetMenu : public QObject
{
    Q_OBJECT

public:
    /// Gives `button` its menu. All outlive it.
    PresetMenu(QPushButton& button, RunChoices& choices, const Services& services);

signals:
    /// What is typed in the pane is to be taken over first: the options are about to be saved.
    void optionsWanted();

private:
    void fill();
    void addPresets(const QList<Preset>& presets);
    void askForName();
    void save(const Preset& preset);
    void importFile();
    void exportFile();
    bool tellOfFaults(const std::function<void()>& work);

    QPushButton& m_button;
    RunChoices& m_choices;
    const Services& m_services;
    QMenu& m_menu;
};

} // namespace pagestack
