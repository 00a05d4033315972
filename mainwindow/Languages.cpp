#include "mainwindow/Languages.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    void install(const QString& name, const QString& folder)
    {
        auto* translator = new QTranslator(QCoreApplication::instance());
        if (translator->load(QLocale(), name, u"_"_s, folder))
            QCoreApplication::installTranslator(translator);
    }

} // namespace

void installTranslations()
{
    // Those of Qt's own dialogs first: the last one is asked first.
    install(u"qtbase"_s, QLibraryInfo::path(QLibraryInfo::TranslationsPath));
    install(u"pagestack"_s, u":/pagestack/translations"_s);
}

} // namespace pagestack
