// Compiles the public headers behind macros and names of other libraries. The headers that they include come
// first, since it is not for us whether those bear that.
#include <IncludedHeaders.h>

// Macros of <windows.h>.
#define min(a, b) (((a) < (b)) ? (a) : (b))
#define max(a, b) (((a) > (b)) ? (a) : (b))
#define near
#define far
#define small char
#define interface struct
#define ERROR 0
#define IN
#define OUT
// Macros of <X11/Xlib.h>. VelorLog.h refuses None itself.
#define Bool int
#define Status int
#define True 1
#define False 0
#define Success 0
#define Always 2
#define Unsorted 0
#define Above 0
#define Below 1

// Another maths library with names like ours.
namespace other {
template <typename T>
struct TVec2d;
template <typename T>
struct TVec3d;
template <typename T>
struct TMat4d;
struct quat;
struct Level;
template <typename V>
float dot(const V&, const V&);
template <typename V>
V cross(const V&, const V&);
template <typename V>
float length(const V&);
} // namespace other
using namespace other;

#include <PublicHeaders.h>

// Inline functions are looked at when they are used.
float useVectors(const ::TVec3d<float>& vector, const ::TVec2d<float>& flat, const ::TMat4d<float>& matrix,
                 const ::quat& turn)
{
    return length(cross(vector, vector) * 2.0F) + dot(vector, vector) + length(flat) + (matrix * 2.0F)[0] +
           (turn + turn).w;
}
