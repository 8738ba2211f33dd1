#pragma once

#include <Velor.Base/VelorVectors.h>

#include <glm/vec3.hpp>

/// \file
/// Peers in a source of their own, so that they cost what a function of a library costs.
namespace peers {

glm::vec3 glmCatmullRom(glm::vec3 p0, glm::vec3 p1, glm::vec3 p2, glm::vec3 p3, float t);

/// The formulas of `VelorMath::bezierCubic2D` and its tangent as they are written down, with `pow` for every
/// power.
/// @{
TVec2d<float> bezierWithPow(TVec2d<float> p0, TVec2d<float> p1, TVec2d<float> p2, TVec2d<float> p3, float t);
TVec2d<float> tangentWithPow(TVec2d<float> p0, TVec2d<float> p1, TVec2d<float> p2, TVec2d<float> p3, float t);
/// @}

} // namespace peers
