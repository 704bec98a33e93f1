#include "ztPlatform.h"

#include <atomic>
#include <cmath>

namespace ztPlatform
{

namespace
{
std::atomic<double> dpiScaleX{1.0};
std::atomic<double> dpiScaleY{1.0};

bool isScale(double value)
{
    return std::isfinite(value) && value > 0.0;
}
} // namespace

double getDpiScaleX()
{
    return dpiScaleX;
}

double getDpiScaleY()
{
    return dpiScaleY;
}

bool setDpiScale(double x, double y)
{
    if (!isScale(x) || !isScale(y))
        return false;
    dpiScaleX = x;
    dpiScaleY = y;
    return true;
}

} // namespace ztPlatform
