#pragma once

#include "Canvas.h"
#include "Options.h"

#include <QtCore/QSize>

/// \file
/// The pictures of this program. Each draws itself on a ground of its size.

inline constexpr QSize PathPictureSize{960, 640};
inline constexpr QSize SheetPictureSize{960, 664};
inline constexpr QSize EasingPictureSize{860, 600};

/// One path with its knots, tangents, control points and run-in.
void drawPathPicture(QPainter& painter, const Theme& theme, const Options& options);

/// Twelve paths that differ in their heading, at one scale.
void drawSheetPicture(QPainter& painter, const Theme& theme, const Options& options);

/// The easing curves.
void drawEasingPicture(QPainter& painter, const Theme& theme);
