#include "FuzzSupport.h"

#include "OSGFieldContainer.h"

#include <QGuiApplication>

#include <cstdio>
#include <cstdlib>

/// Called by libFuzzer before the first input.
extern "C" int LLVMFuzzerInitialize(int* argumentCount, char*** arguments)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qInstallMessageHandler([](QtMsgType, QMessageLogContext const&, QString const&) {});
    new QGuiApplication(*argumentCount, *arguments); // never deleted: fonts of Qt go before static objects made here
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

} // namespace ztFuzz
