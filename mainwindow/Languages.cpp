#include "mainwindow/Languages.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    const QString ourTexts = u":/pagestack/translations"_s;

    /// The language of the texts that were found; empty for none.
    QString install(const QLocale& locale, const QString& name, const QString& folder)
    {
        auto* translator = new QTranslator(QCoreApplication::instance());
        if (!translator->load(locale, name, u"_"_s, folder)
            || !QCoreApplication::installTranslator(translator))
            return {};
        return translator->language();
    }

} // namespace

void installTranslations()
{
    // Those of Qt's own dialogs only where the window speaks the same language.
    const QString language = install(QLocale(), u"pagestack"_s, ourTexts);
    if (language.isEmpty())
        install(QLocale::English, u"pagestack"_s, ourTexts);
    else
        install(QLocale(language), u"qtbase"_s, QLibraryInfo::path(QLibraryInfo::TranslationsPath));
}

} // namespace pagestack
