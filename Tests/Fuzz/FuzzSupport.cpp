#include "FuzzSupport.h"

#include "ztPlatform.h"

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
    return std::isnan(value) ? 0 : int(std::min(std::max(value, lowest), highest));
}

TextSize::TextSize(osg::Overlay const& overlay, int targetHeight) : points(truncated(double(overlay.size))), pixels(0)
{
    QString const text = QString::fromUtf8(overlay.text.c_str());
    if (overlay.sizeMode != osg::Overlay::SizeAbsolute)
    {
        pixels = truncated(double(float(targetHeight) * overlay.size));
        points = truncated(pixels / ztPlatform::getDpiScaleY() / (text.count('\n') + 1));
    }
    if (text.isEmpty())
        points = pixels = 0;
}

osg::TextureChunkPtr slotOf(osg::Overlay const& overlay)
{
    auto const& chunks = osg::dynamicCast<osg::ChunkMaterial>(overlay.foreground->material)->chunks;
    return chunks.empty() ? osg::TextureChunkPtr() : osg::dynamicCast<osg::TextureChunk>(chunks.front());
}

} // namespace ztFuzz
