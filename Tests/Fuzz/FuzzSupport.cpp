#include "FuzzSupport.h"

#include "OSGFieldContainer.h"

#include <QGuiApplication>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

/// Called by libFuzzer before the first input.
extern "C" int LLVMFuzzerInitialize(int* argumentCount, char*** arguments)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler([](QtMsgType, QMessageLogContext const&, QString const&) {});
    static QGuiApplication application(*argumentCount, *arguments);
    return 0;
}

namespace ztFuzz
{

void require(bool condition, char const* what)
{
    if (condition)
        return;
    std::fprintf(stderr, "Failed: %s\n", what);
    std::abort();
}

void requireNoContainers()
{
    require(osg::FieldContainerFactory::getNumContainers() == 0, "all containers are gone");
}

int truncated(double value)
{
    constexpr double lowest = std::numeric_limits<int>::min(), highest = std::numeric_limits<int>::max();
    return std::isnan(value) ? 0 : int(std::clamp(value, lowest, highest));
}

} // namespace ztFuzz
