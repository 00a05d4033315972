#pragma once

#include <QCoreApplication>
#include <QTranslator>

namespace pagestack {

/// A language, spoken as long as it lives, that has each text of the engine in angles.
class Angles : public QTranslator
{
public:
    Angles() { QCoreApplication::installTranslator(this); }

    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* text, const char* /*comment*/,
                      int /*count*/) const override
    {
        return QByteArrayView(context) == "pagestack::Reasons"
            ? u'<' + QString::fromUtf8(text) + u'>'
            : QString();
    }
};

} // namespace pagestack
