#include "mainwindow/widgets/Theme.h"

#include <QApplication>

namespace pagestack {

namespace {

    struct Colours
    {
        QRgb window, base, alternate, button, text, dimmed, mid, dark, highlight, link, tip;
    };

    constexpr Colours light { 0xffefefef, 0xffffffff, 0xfff4f5f6, 0xfff3f3f3,
                              0xff101214, 0xff8b8f94, 0xffb4b8bc, 0xff8c9094,
                              0xff1b6aa5, 0xff0b57a4, 0xfffdfdf4 };
    constexpr Colours dark { 0xff202225, 0xff2b2e32, 0xff303338, 0xff2e3135, 0xffeceef0, 0xff83888e,
                             0xff5a5e65, 0xff121315, 0xff1f6fab, 0xff7db9f0, 0xff3a3d41 };

    QPalette paletteFrom(const Colours& colours, const QColor& raised)
    {
        QPalette palette;
        const auto set = [&palette](QPalette::ColorRole role, QRgb active, QRgb disabled) {
            palette.setColor(QPalette::All, role, QColor::fromRgb(active));
            palette.setColor(QPalette::Disabled, role, QColor::fromRgb(disabled));
        };
        for (const auto role : { QPalette::WindowText, QPalette::Text, QPalette::ButtonText })
            set(role, colours.text, colours.dimmed);
        set(QPalette::Window, colours.window, colours.window);
        set(QPalette::Base, colours.base, colours.window);
        set(QPalette::AlternateBase, colours.alternate, colours.window);
        set(QPalette::Button, colours.button, colours.window);
        set(QPalette::ToolTipBase, colours.tip, colours.tip);
        set(QPalette::ToolTipText, colours.text, colours.text);
        set(QPalette::Highlight, colours.highlight, colours.button);
        set(QPalette::HighlightedText, 0xffffffff, colours.text);
        set(QPalette::Link, colours.link, colours.dimmed);
        set(QPalette::LinkVisited, colours.link, colours.dimmed);
        set(QPalette::BrightText, 0xffffffff, 0xffffffff);
        set(QPalette::Mid, colours.mid, colours.dark);
        set(QPalette::Dark, colours.dark, colours.dark);
        set(QPalette::Shadow, 0xff000000, 0xff000000);
        palette.setColor(QPalette::Light, raised);
        palette.setColor(QPalette::Midlight, raised);
        QColor hint = QColor::fromRgb(colours.text);
        hint.setAlphaF(0.65F);
        palette.setColor(QPalette::PlaceholderText, hint);
        return palette;
    }

} // namespace

QPalette paletteOf(Theme theme)
{
    switch (theme) {
    case Theme::Light:
        return paletteFrom(light, QColor::fromRgb(0xffffffff));
    case Theme::Dark:
        return paletteFrom(dark, QColor::fromRgb(0xff3c4045));
    case Theme::System:
        break;
    }
    return {};
}

void showTheme(Theme theme) { QApplication::setPalette(paletteOf(theme)); }

} // namespace pagestack
