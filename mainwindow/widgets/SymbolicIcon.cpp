#include "mainwindow/widgets/SymbolicIcon.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmap>
#include <QSvgRenderer>

using namespace Qt::StringLiterals;

// The resources are linked from a static library, which drops what nobody names. The macro has to
// stand outside of every namespace.
static QString resource(const QString& name)
{
    Q_INIT_RESOURCE(Pagestack);
    return u":/pagestack/"_s + name;
}

namespace pagestack {

namespace {

    /// Draws an SVG file as a stencil: its shape from the file, its colour from the palette.
    class StencilEngine : public QIconEngine
    {
    public:
        explicit StencilEngine(const QString& path)
            : m_path(path)
            , m_renderer(path)
        {
        }

        void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode,
                   QIcon::State state) override
        {
            const qreal ratio = painter->device()->devicePixelRatioF();
            painter->drawPixmap(rect, pixmap((QSizeF(rect.size()) * ratio).toSize(), mode, state));
        }

        /// `size` counts device pixels; the caller sets the pixel ratio.
        QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State /*state*/) override
        {
            QPixmap pixmap(size);
            pixmap.fill(Qt::transparent);
            QPainter painter(&pixmap);
            m_renderer.render(&painter, QRectF(QPointF(), QSizeF(size)));
            painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
            painter.fillRect(pixmap.rect(), colorOf(mode));
            return pixmap;
        }

        [[nodiscard]] QString key() const override { return u"pagestack-symbolic"_s; }
        [[nodiscard]] QIconEngine* clone() const override { return new StencilEngine(m_path); }

    private:
        static QColor colorOf(QIcon::Mode mode)
        {
            const QPalette palette = QApplication::palette();
            switch (mode) {
            case QIcon::Disabled:
                return palette.color(QPalette::Disabled, QPalette::WindowText);
            case QIcon::Selected:
                return palette.color(QPalette::Active, QPalette::HighlightedText);
            case QIcon::Normal:
            case QIcon::Active:
                break;
            }
            return palette.color(QPalette::Active, QPalette::WindowText);
        }

        QString m_path;
        QSvgRenderer m_renderer;
    };

} // namespace

QIcon symbolicIcon(const QString& name)
{
    const QString path = resource(u"icons/%1.svg"_s.arg(name));
    return QFile::exists(path) ? QIcon(new StencilEngine(path)) : QIcon();
}

QIcon applicationIcon()
{
    QSvgRenderer renderer(resource(u"pagestack.svg"_s));
    QIcon icon;
    for (const int side : { 16, 24, 32, 48, 64, 128, 256 }) {
        QPixmap pixmap(side, side);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        renderer.render(&painter);
        icon.addPixmap(pixmap);
    }
    return icon;
}

void applySymbolicIcons(QObject& root)
{
    const auto objects = root.findChildren<QObject*>();
    for (QObject* object : objects) {
        const QString name = object->property("symbolicIcon").toString();
        if (name.isEmpty())
            continue;
        if (auto* const button = qobject_cast<QAbstractButton*>(object))
            button->setIcon(symbolicIcon(name));
        else if (auto* const action = qobject_cast<QAction*>(object))
            action->setIcon(symbolicIcon(name));
    }
}

} // namespace pagestack
