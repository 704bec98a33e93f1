// What the check finds in a scene with one mistake.
#include "TestSupport.h"
#include "ztOverlayCheck.h"

#include <QRegularExpression>

#include <algorithm>
#include <dlfcn.h>

namespace
{

using ztOverlayCheck::Kind;
using O = osg::Overlay;

class OverlayCheckTest;

/// A mistake and what is to be found: of each finding its kind, its node and a pattern of its line.
struct Row
{
    char const* name;
    void (*spoil)(OverlayCheckTest& test);
    std::vector<std::tuple<Kind, std::string, std::string>> expected;
};

/// A scene without a mistake: a text and a picture, up to date and attached to a viewport.
class OverlayCheckTest : public SceneTest, public testing::WithParamInterface<Row>
{
  public:
    OverlayCheckTest()
    {
        osg::NodePtr const pool = makeScene();
        for (osg::NodePtr const& node : {_textNode, _pictureNode})
            pool->addChild(node);
        osg::setName(_textNode, "title");
        osg::setName(_pictureNode, "logo");
        ztOverlays::updateAllOverlays(_viewport);
        ztOverlays::addOverlays(_viewport);
    }

    /// Announces what was written to an overlay.
    void update(osg::OverlayPtr const& overlay)
    {
        osg::markChanged(overlay, O::TextFieldMask);
        ztOverlays::updateAllOverlays(_viewport);
    }

    ~OverlayCheckTest() override { _otherQt&& dlclose(_otherQt); }

    void setRoot(osg::NodePtr const& root) { ztOpenSGUtils::setRoot(hold(root)); }

    osg::OverlayPtr _text = makeText("Take 3", 0.2f, O::SizeRelative);
    osg::OverlayPtr _picture = makePicture(makeImage(4, 3, {51, 0, 0, 51}));
    osg::NodePtr _textNode = _text->getParents().front(), _pictureNode = _picture->getParents().front();
    osg::ViewportPtr _viewport = makeViewport(300, 200);
    void* _otherQt = nullptr;
};

Row const rows[] = {
    {"nothing", [](OverlayCheckTest&) {}, {}},
    {"a size that leads to a new rendering anyway", [](OverlayCheckTest& t) { t._text->size = 0.3f; }, {}},
    {"a picture with any family",
     [](OverlayCheckTest& t) { t._picture->font = "DejaVv Sanz", t.update(t._picture); },
     {}},
    {"no root",
     [](OverlayCheckTest&) { ztOpenSGUtils::setRoot(osg::NullFC); },
     {{Kind::NoRoot, "", "^there is no scene"}}},
    {"no pool", [](OverlayCheckTest& t) { t.setRoot(osg::create<osg::Node>()); }, {{Kind::NoPool, "", "no pool"}}},
    {"two Qts",
     [](OverlayCheckTest& t) { t._otherQt = dlopen(ZT_OTHER_QT, RTLD_NOW); },
     {{Kind::SeveralQts, "", "two major versions"}}},
    {"a mistyped family",
     [](OverlayCheckTest& t) { t._text->font = "DejaVv Sanz", t.update(t._text); },
     {{Kind::MissingFont, "title", "nearest name is \"DejaVu Sans\""}}},
    {"straight alpha",
     [](OverlayCheckTest& t) { t._picture->image->pixels[4 * 6 + 1] = 52; },
     {{Kind::StraightAlpha, "logo", "column 2 of row 1 "}}},
    {"another text",
     [](OverlayCheckTest& t) { t._text->text = "Take 4"; },
     {{Kind::UnmarkedChange, "title", "unannounced; call"}}},
    {"another text in bold points",
     [](OverlayCheckTest& t) {
         t._text->sizeMode = O::SizeAbsolute, t._text->size = 9, t._text->textColor.a = -1, t.update(t._text);
         t._text->text = "Take 3\n";
     },
     {{Kind::UnmarkedChange, "title", ""}, {Kind::ColorRange, "title", "is -1"}}},
    {"nothing to see",
     [](OverlayCheckTest& t) {
         t._text->sizeMode = O::SizeAbsolute, t._text->size = 9, t._text->text = "\n", t._text->font = "";
         osg::setRefdCP(t._picture->image, osg::create<osg::Image>()), t.update(t._text);
     },
     {}},
    {"no picture",
     [](OverlayCheckTest& t) { osg::setRefdCP(t._picture->image, osg::NullFC), t.update(t._picture); },
     {}},
    {"no foreground",
     [](OverlayCheckTest& t) {
         t._viewport->foregrounds = {};
         osg::setRefdCP(t._text->foreground, osg::NullFC), t._text->dirty = true;
     },
     {{Kind::StillDirty, "title", "hasn't been updated"}}},
    {"no more text", [](OverlayCheckTest& t) { t._text->text = ""; }, {{Kind::UnmarkedChange, "title", ""}}},
    {"another DPI scale",
     [](OverlayCheckTest&) { ztPlatform::setDpiScale(3, 3); },
     {{Kind::UnmarkedChange, "title", "DPI"}}},
    {"points for a fraction",
     [](OverlayCheckTest& t) { t._picture->sizeMode = O::SizeRelative, t.update(t._picture); },
     {{Kind::RelativeSize, "logo", "12 times"}}},
    {"bytes for a colour",
     [](OverlayCheckTest& t) { t._text->backgroundColor.g = 255, t.update(t._text); },
     {{Kind::ColorRange, "title", "is 255"}}},
    {"added twice",
     [](OverlayCheckTest& t) { ztOverlays::addOverlays(t._viewport); },
     {{Kind::AttachedTwice, "title", "2 times"}, {Kind::AttachedTwice, "logo", "2 times"}}},
    {"hidden by its pool",
     [](OverlayCheckTest& t) { t._textNode->parent->travMask = 1, t._viewport->foregrounds.pop_back(); },
     {{Kind::HiddenButAttached, "logo", "removeOverlays"}}},
    {"hidden without a viewport",
     [](OverlayCheckTest& t) { t._textNode->travMask = 0, t._viewport = osg::NullFC; },
     {}},
    {"not updated",
     [](OverlayCheckTest& t) { osg::markChanged(t._picture, O::SizeFieldMask), t._text->dirty = true; },
     {{Kind::StillDirty, "title", "hasn't been updated"}, {Kind::StillDirty, "logo", "hasn't been updated"}}},
    {"an empty text",
     [](OverlayCheckTest& t) { t._text->text = "", t.update(t._text); },
     {{Kind::StillDirty, "title", "no text"}}},
    {"too small a text",
     [](OverlayCheckTest& t) { t._text->size = 0.004f, t.update(t._text); },
     {{Kind::StillDirty, "title", "smaller than a point"}}},
    {"no chunks",
     [](OverlayCheckTest& t) {
         osg::setRefdCP<osg::Material>(t._text->foreground->material, osg::create<osg::ChunkMaterial>()),
             t.update(t._text);
     },
     {{Kind::StillDirty, "title", "no chunk"}}},
};

bool matches(std::string const& text, std::string const& pattern)
{
    return QString::fromStdString(text).contains(QRegularExpression(QString::fromStdString(pattern)));
}

TEST_P(OverlayCheckTest, FindsNoMoreAndNoLessAndChangesNothing)
{
    auto const& [name, spoil, expected] = GetParam();
    spoil(*this);
    Recorder recorder;
    auto const findings = ztOverlayCheck::inspect(_viewport);
    EXPECT_EQ(recorder.take(), "");
    ASSERT_EQ(findings.size(), expected.size());
    for (std::size_t i = 0; i < findings.size(); ++i)
    {
        auto const& [kind, node, pattern] = expected[i];
        std::string const line = toLine(findings[i]);
        EXPECT_EQ(findings[i].kind, kind) << line;
        EXPECT_EQ(findings[i].node, node) << line;
        EXPECT_TRUE(matches(line, pattern)) << line;
        EXPECT_TRUE(matches(findings[i].advice, "^(add|build|call|install|leave|make|raise|write) ")) << line;
    }
}

TEST(NearestNameTest, NeedsTheFewestCharactersAddedTakenOrReplaced)
{
    using ztOverlayCheck::nearestName;
    EXPECT_EQ(nearestName("abcd", {"axyd", "abxyd", "abxd", "axcd"}), "abxd");
    EXPECT_EQ(nearestName("abcd", {"dcba", "zabcdz", "cd", "xbcd", "abc"}), "xbcd");
    EXPECT_EQ(nearestName("abcd", {"bcxd", "abcdef", "bcd"}), "bcd");
}

INSTANTIATE_TEST_SUITE_P(Rows, OverlayCheckTest, testing::ValuesIn(rows), [](auto const& row) {
    std::string name = row.param.name;
    std::replace(name.begin(), name.end(), ' ', '_');
    return name;
});

} // namespace
