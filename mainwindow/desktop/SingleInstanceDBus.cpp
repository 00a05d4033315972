#include "engine/support/SystemLog.h"
#include "mainwindow/desktop/SingleInstance.h"

#include <QDBusAbstractAdaptor>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QVariantMap>

namespace pagestack {

using namespace Qt::StringLiterals;

namespace {

    const QString serviceName = u"com.corvanta.Pagestack1"_s;
    const QString objectPath = u"/com/corvanta/Pagestack1"_s;
    const QString applicationInterface = u"org.freedesktop.Application"_s;
    constexpr auto tokenVariable = "XDG_ACTIVATION_TOKEN";
    constexpr int answerMs = 5000;

    bool claimName(QDBusConnection bus) { return bus.registerService(serviceName); }

} // namespace

/// What other starts of the program call. Desktop Entry Specification, "D-Bus Activation".
class ApplicationAdaptor : public QDBusAbstractAdaptor
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    explicit ApplicationAdaptor(SingleInstance& instance)
        : QDBusAbstractAdaptor(&instance)
        , m_instance(instance)
    {
    }

public slots:
    void Activate(const QVariantMap& platformData, const QDBusMessage& call)
    {
        Open({}, platformData, call);
    }
    void Open(const QStringList& uris, const QVariantMap& platformData, const QDBusMessage& call)
    {
        if (m_instance.isEnding()) {
            call.setDelayedReply(true); // there is one already
            QDBusConnection::sessionBus().send(
                call.createErrorReply(QDBusError::Failed, u"it is about to end"_s));
            return;
        }
        // With it a Wayland desktop lets the window come to the front.
        if (const QByteArray token = platformData.value(u"activation-token"_s).toByteArray();
            !token.isEmpty())
            qputenv(tokenVariable, token);
        QList<QUrl> urls;
        for (const QString& uri : uris)
            if (const QUrl url = QUrl::fromEncoded(uri.toLatin1()); url.isLocalFile())
                urls.append(url);
        emit m_instance.opened(urls);
    }

private:
    SingleInstance& m_instance;
};

SingleInstance::SingleInstance()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected())
        return;
    new ApplicationAdaptor(*this); // a child
    // Before the name, which promises that the object is there.
    bus.registerObject(objectPath, this);
    m_isFirst = claimName(bus);
}

SingleInstance::~SingleInstance()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (m_isFirst && bus.isConnected())
        bus.unregisterService(serviceName);
    bus.unregisterObject(objectPath);
}

bool SingleInstance::handOver(const QList<QUrl>& urls)
{
    if (m_isFirst)
        return false;
    QStringList uris;
    for (const QUrl& url : urls)
        uris.append(QString::fromLatin1(url.toEncoded()));
    QVariantMap platformData;
    if (qEnvironmentVariableIsSet(tokenVariable))
        platformData.insert(u"activation-token"_s, qEnvironmentVariable(tokenVariable));
    QDBusMessage call
        = QDBusMessage::createMethodCall(serviceName, objectPath, applicationInterface, u"Open"_s);
    call << uris << platformData;
    const QDBusConnection bus = QDBusConnection::sessionBus();
    const QDBusMessage answer = bus.call(call, QDBus::Block, answerMs);
    if (answer.type() == QDBusMessage::ReplyMessage)
        return true;
    systemLog(u"The window that is open already does not answer: "_s + answer.errorMessage());
    m_isFirst = claimName(bus); // it may have ended meanwhile
    return false;
}

} // namespace pagestack

#include "SingleInstanceDBus.moc"
