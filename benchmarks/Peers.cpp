#include "Peers.h"

// GLM counts the spline among its experimental functions.
#define GLM_ENABLE_EXPERIMENTAL
#include <glm/gtx/spline.hpp>

#include <cmath>

glm::vec3 peers::glmCatmullRom(glm::vec3 p0, glm::vec3 p1, glm::vec3 p2, glm::vec3 p3, float t)
{
    return glm::catmullRom(p0, p1, p2, p3, t);
}

TVec2d<float> peers::bezierWithPow(TVec2d<float> p0, TVec2d<float> p1, TVec2d<float> p2, TVec2d<float> p3,
                                   float t)
{
    const float u = 1 - t;
    const double wideT = t;
    const double wideU = u;
    const TVec2d<float> zero;
    return zero + float(std::pow(wideU, 3.0)) * p0 + float(std::pow(wideU, 2.0) * 3.0 * wideT) * p1 +
           float(std::pow(wideT, 2.0) * double(3 * u)) * p2 + float(std::pow(wideT, 3.0)) * p3;
}

TVec2d<float> peers::tangentWithPow(TVec2d<float> p0, TVec2d<float> p1, TVec2d<float> p2, TVec2d<float> p3,
                                    float t)
{
    const double squareT = std::pow(double(t), 2.0);
    const double squareU = std::pow(double(1 - t), 2.0);
    const TVec2d<float> sum = TVec2d<float>() + float(squareU * -3.0) * p0 +
                              float(9.0 * std::pow(double(t), 2.0) - double(12 * t) + 3.0) * p1 +
                              float(double(6 * t) - 9.0 * std::pow(double(t), 2.0)) * p2 +
                              float(squareT * 3.0) * p3;
    const float size = length(sum);
    return size > 0 ? sum * (1 / size) : sum;
}
