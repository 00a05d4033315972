#pragma once

#include <QIcon>

class QObject;

namespace pagestack {

/// The icon that the program brings under `name` ("move-up"), drawn in one colour: that of the text
/// of the application's palette at the moment of drawing, so that it follows a change of theme and
/// dims when disabled. Sharp at every size and pixel ratio. A null icon when there is none of that
/// name. Main thread.
QIcon symbolicIcon(const QString& name);

/// The program's own icon, in colours.
QIcon applicationIcon();

/// Gives its icon to every button and action below `root` that has the dynamic property
/// "symbolicIcon", whose value is the icon's name.
void applySymbolicIcons(QObject& root);

} // namespace pagestack
