// Rendering one text, beside the same calls of Qt without the library.
#include "BareText.h"
#include "Benchmark.h"
#include "ztOverlayUtils.h"

namespace ztBenchmarks
{

namespace
{

constexpr int targetWidth = 1920;
constexpr int targetHeight = 1080;

struct Content
{
    char const* name;
    char const* text;
    int lines;
};

constexpr Content contents[] = {
    {"short", "Take 3", 1},
    {"five lines", "Camera 1\nangle   40\nheight  2.75\ndepth   13.20\nframe   12/240", 5},
    {"three scripts", "The sea · البحر · समुद्र", 1},
};

Contenders render(Content const& content, int points, bool isRelative)
{
    std::shared_ptr<osg::Node> const node(ztOverlays::createOverlay(osg::NullFC).get(),
                                          [](osg::Node* held) { osg::subRef(osg::NodePtr(held)); });
    auto const overlay = osg::dynamicCast<osg::Overlay>(node->core);
    overlay->text = content.text;
    overlay->font = "DejaVu Sans";
    overlay->backgroundTransparency = {0.4f, 0.4f, 0.4f};
    overlay->sizeMode = isRelative;
    // Half a pixel more than the points need: the library cuts.
    overlay->size = isRelative ? (float(points * content.lines) + 0.5f) / targetHeight : float(points);
    return {{"ours",
             [node, overlay] {
                 return timed([&] { ztOverlays::updateOverlayImage(overlay, targetWidth, targetHeight); });
             }},
            {"Qt's calls", [node, overlay] { return timed([&] { renderWithQt(*overlay, targetHeight); }); }}};
}

} // namespace

Cases textCases()
{
    Cases cases;
    for (Content const& content : contents)
        for (int const points : {14, 48})
            for (bool const isRelative : {false, true})
                cases.push_back(
                    {"text " + std::to_string(points) + " points, " + content.name + (isRelative ? ", relative" : ""),
                     [=] { return render(content, points, isRelative); }});
    return cases;
}

} // namespace ztBenchmarks
