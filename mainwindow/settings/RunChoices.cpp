#include "mainwindow/settings/RunChoices.h"

#include "engine/settings/Settings.h"
#include "engine/settings/UserDefaults.h"
#include "engine/support/SystemLog.h"

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    const QString choicesKey = u"OPTIONS"_s;

} // namespace

RunChoices::RunChoices(Settings& settings, UserDefaults& store)
    : m_settings(settings)
    , m_store(store)
{
    m_options.writesRecord = true; // who does not want it unticks it
    const QVariantMap stored = store.objectForKey(choicesKey).toMap();
    ConversionOptions options = all();
    for (const ConversionOptionRow& row : conversionOptionTable()) {
        const auto text = stored.constFind(row.name);
        if (text == stored.cend() || row.label.isEmpty())
            continue;
        try {
            row.set(options, row, text->toString());
        } catch (const OptionError& error) {
            systemLogError(u"RunChoices"_s, error);
        }
    }
    m_options = options.run;
}

ConversionOptions RunChoices::all() const { return conversionOptions(m_settings, m_options); }

bool RunChoices::hasEffect(const ConversionOptionRow& row) const
{
    const bool hasFolder = !m_settings.outputFolderPath().isEmpty();
    return idleWith(all(), row.name).isEmpty() && (hasFolder || row.name != u"mirror");
}

void RunChoices::setAll(const ConversionOptions& options)
{
    applyTo(m_settings, options);
    m_options = options.run;
    QVariantMap stored;
    for (const ConversionOptionRow& row : conversionOptionTable())
        if (!row.label.isEmpty())
            stored.insert(row.name, row.text(options, row));
    m_store.setObject(choicesKey, stored);
    emit changed();
}

void RunChoices::setText(const ConversionOptionRow& row, const QString& text)
{
    ConversionOptions options = all();
    row.set(options, row, text);
    if (options.run != m_options)
        setAll(options);
}

} // namespace pagestack
