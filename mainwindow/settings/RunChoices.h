#pragma once

#include "engine/options/ConversionOptions.h"

#include <QObject>

namespace pagestack {

class UserDefaults;

/// The live choices of the window beside the settings. Every change goes to the store, under
/// "OPTIONS", as the texts of the options by their names. Main thread.
class RunChoices : public QObject
{
    Q_OBJECT

public:
    /// Takes over what `store` holds; what cannot be read is ignored. Both are borrowed.
    RunChoices(Settings& settings, UserDefaults& store);

    const RunOptions& options() const { return m_options; }

    /// Together with those of the settings, which `setAll` changes as well.
    ConversionOptions all() const;
    void setAll(const ConversionOptions& options);

    /// As the settings are.
    bool hasEffect(const ConversionOptionRow& row) const;
    QString text(const ConversionOptionRow& row) const { return row.text(all(), row); }
    /// Throws OptionError.
    void setText(const ConversionOptionRow& row, const QString& text);

signals:
    void changed();

private:
    Settings& m_settings;
    UserDefaults& m_store;
    RunOptions m_options;
};

} // namespace pagestack
