#include "ztPlatform.h"

#include <cmath>

namespace ztPlatform
{

std::atomic<double> Detail::dpiScaleX{1.0};
std::atomic<double> Detail::dpiScaleY{1.0};

namespace
{
bool isScale(double value)
{
    return std::isfinite(value) && value > 0.0;
}
} // namespace

bool setDpiScale(double x, double y)
{
    if (!isScale(x) || !isScale(y))
        return false;
    Detail::dpiScaleX = x;
    Detail::dpiScaleY = y;
    return true;
}

} // namespace ztPlatform
