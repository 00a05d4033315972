#include "mainwindow/Languages.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    const QString ourTexts = u":/pagestack/translations"_s;

    bool install(const QLocale& locale, const QString& name, const QString& folder)
    {
        auto* translator = new QTranslator(QCoreApplication::instance());
        return translator->load(locale, name, u"_"_s, folder)
            && QCoreApplication::installTranslator(translator);
    }

} // namespace

void installTranslations()
{
    // Those of Qt's own dialogs only where the window speaks the same language.
    if (install(QLocale(), u"pagestack"_s, ourTexts))
        install(QLocale(), u"qtbase"_s, QLibraryInfo::path(QLibraryInfo::TranslationsPath));
    else
        install(QLocale::English, u"pagestack"_s, ourTexts);
}

} // namespace pagestack
