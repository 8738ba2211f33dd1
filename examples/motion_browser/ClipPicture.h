#pragma once

#include <QtGui/QPalette>
#include <QtGui/QPixmap>

/// The picture of a clip: a card with the path that its motion takes over the ground, from the dot to the
/// arrow. The path hangs on the name alone, so that a clip looks the same in every process.
///
/// `side` is in device-independent pixels, `ratio` the screen's device pixel ratio; the colours suit
/// `palette`.
QPixmap clipPicture(const QString& name, int side, double ratio, const QPalette& palette);
