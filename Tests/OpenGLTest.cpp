// Overlays drawn with OpenGL into an image, against the same overlays stamped onto one. In both profiles,
// without a window.
#include "SurfacelessContext.h"
#include "TestSupport.h"

#include "OSGOpenGLDrawAction.h"
#include "PainterDrawAction.h"
#include "ztOpenSGExt.h"

#include <cmath>
#include <cstdlib>
#include <random>
#include <stdexcept>
#include <thread>

namespace
{

/// The parameter: whether the profile is ES.
class OpenGLTest : public SceneTest, public testing::WithParamInterface<bool>
{
  protected:
    /// A test environment can demand that there is a context.
    void SetUp() override
    {
        if (!context.isThere() && !std::getenv("ZT_REQUIRE_OPENGL"))
            GTEST_SKIP() << "no EGL context can be had";
        ASSERT_TRUE(context.isThere()) << "no EGL context can be had";
        target = make(glGenTextures);
        framebuffer = make(glGenFramebuffers);
    }

    void TearDown() override
    {
        if (context.isThere())
        {
            context.makeCurrent();
            EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
            action.release();
        }
        SceneTest::TearDown();
    }

    /// Binds a framebuffer of a size that holds the pixels of a frame.
    void startFrom(osg::ImagePtr const& frame) { startFrom(frame, target, framebuffer); }
    static void startFrom(osg::ImagePtr const& frame, GLuint target, GLuint framebuffer)
    {
        glBindTexture(GL_TEXTURE_2D, target);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, frame->width, frame->height, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                     frame->pixelBuffer());
        glBindTexture(GL_TEXTURE_2D, 0);
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, target, 0);
    }

    osg::ImagePtr readBack(int width, int height)
    {
        osg::ImagePtr const image = makeImage(width, height);
        glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, image->pixelBuffer());
        return image;
    }

    /// What a viewport shows over a frame of its size.
    osg::ImagePtr render(osg::ViewportPtr const& viewport, osg::ImagePtr const& frame)
    {
        startFrom(frame);
        viewport->render(&action);
        EXPECT_EQ(action.takeFailure(), "");
        return readBack(frame->width, frame->height);
    }

    /// Overlays drawn over a frame, laid out for its size.
    osg::ImagePtr drawOver(osg::ImagePtr const& frame, std::vector<osg::OverlayPtr> const& overlays)
    {
        osg::ViewportPtr const viewport = makeViewport(frame->width, frame->height);
        for (osg::OverlayPtr const& overlay : overlays)
        {
            ztOverlays::updateOverlay(overlay, frame->width, frame->height);
            viewport->foregrounds.push_back(overlay->foreground);
        }
        return render(viewport, frame);
    }

    osg::ImagePtr stampOver(osg::ImagePtr const& frame, osg::OverlayPtr const& overlay)
    {
        osg::ImagePtr const stamped = makeImage(frame->width, frame->height);
        stamped->pixels = frame->pixels;
        ztOverlays::blendOverlaysOntoImage({overlay}, stamped, osg::NullFC);
        return stamped;
    }

    /// Another colour at every pixel, of one alpha.
    osg::ImagePtr makeFrame(int width, int height, int alpha)
    {
        osg::ImagePtr const frame = makeImage(width, height);
        for (std::size_t i = 0; i < frame->pixels.size(); ++i)
            frame->pixels[i] = osg::UInt8(i % 4 == 3 ? alpha : int((i * 7 + i / 9) % 256) * alpha / 255);
        return frame;
    }

    /// Any premultiplied pixels.
    osg::ImagePtr makeNoise(int width, int height)
    {
        osg::ImagePtr const noise = makeImage(width, height);
        for (auto pixel = noise->pixels.begin(); pixel != noise->pixels.end(); pixel += 4)
        {
            pixel[3] = osg::UInt8(random() % 256);
            std::generate_n(pixel, 3, [&] { return osg::UInt8(random() % (pixel[3] + 1u)); });
        }
        return noise;
    }

    osg::UInt64 uploadsOf(std::function<void()> const& work)
    {
        osg::UInt64 const before = action.getNumUploads();
        work();
        return action.getNumUploads() - before;
    }

    osg::OverlayPtr makeSquare(int size, std::array<int, 4> pixel = {255, 255, 255, 255})
    {
        return makePicture(makeImage(size, size, pixel), float(size));
    }

    osg::OverlayPtr makeLabel()
    {
        osg::OverlayPtr const label = makeText("Take 3\n\u05e9\u05dc\u05d5\u05dd 12");
        label->textColor = {1.0f, 0.7f, 0.2f, 0.9f};
        label->backgroundColor = {0.1f, 0.3f, 0.5f};
        label->anchor = {0.31f, 0.77f};
        return label;
    }

    SurfacelessContext context{GetParam()};
    osg::OpenGLDrawAction action;
    GLuint framebuffer = 0, target = 0;
    std::mt19937 random{1};
};

INSTANTIATE_TEST_SUITE_P(Profiles, OpenGLTest, testing::Values(false, true),
                         [](auto const& profile) { return profile.param ? "ES" : "Core"; });

template <class Chunk>
osg::FCPtr<Chunk> chunkOf(osg::OverlayPtr const& overlay, std::size_t i)
{
    return osg::dynamicCast<Chunk>(osg::dynamicCast<osg::ChunkMaterial>(overlay->foreground->material)->chunks.at(i));
}

/// The largest of any byte.
int difference(osg::ImagePtr const& a, osg::ImagePtr const& b)
{
    int largest = a->pixels.size() == b->pixels.size() ? 0 : 256;
    for (std::size_t i = 0; i < std::min(a->pixels.size(), b->pixels.size()); ++i)
        largest = std::max(largest, std::abs(a->pixels[i] - b->pixels[i]));
    return largest;
}

TEST_P(OpenGLTest, UnscaledOverlaysAgreeWithTheStamp)
{
    osg::OverlayPtr const label = makeLabel();
    for (int alpha : {255, 100, 10, 0})
    {
        osg::OverlayPtr const picture = makePicture(makeImage(60, 40), 40);
        for (std::size_t i = 0; i < picture->image->pixels.size(); ++i)
            picture->image->pixels[i] = osg::UInt8(i % 4 == 3 ? unsigned(alpha) : random() % (unsigned(alpha) + 1));
        osg::ImagePtr const opaque = makeFrame(200, 150, 255), translucent = makeFrame(321, 123, alpha);
        for (auto const& [transparency, x, y] :
             {std::tuple{0.0f, 0.0f, 0.0f}, {0.4f, 20.7f, 30.4f}, {1.0f, 160.5f, 130.9f}})
        {
            label->backgroundTransparency = {transparency, transparency, transparency};
            picture->offset = {x, y};
            osg::ImagePtr const stamped = stampOver(translucent, label);
            EXPECT_LE(difference(drawOver(translucent, {label}), stamped), 1) << transparency << ' ' << alpha;
            EXPECT_GT(difference(translucent, stamped), 50);
            EXPECT_LE(difference(drawOver(opaque, {picture}), stampOver(opaque, picture)), 1) << alpha << ' ' << x;
        }
    }
    EXPECT_EQ(pixelAt(drawOver(makeImage(1, 1), {makeSquare(1)}), 0, 0)[0], 255) << "a viewport of a pixel";
}

/// Of two images of 96 by 64.
void drawDiscAndCheckers(std::vector<osg::UInt8>& disc, std::vector<osg::UInt8>& checkers)
{
    for (std::size_t i = 0; i < disc.size(); ++i)
    {
        std::size_t const x = i / 4 % 96, y = i / 4 / 96;
        double const alpha = 100 + 155 * std::clamp(24.5 - std::hypot(double(x) - 48, double(y) - 32), 0.0, 1.0);
        disc[i] = osg::UInt8(i % 4 == 3 ? alpha : alpha * (0.5 + 0.5 * std::sin(double(x + i % 4 * y) * 0.05)));
        checkers[i] = (x + y) % 2 ? 255 : 0;
    }
}

TEST_P(OpenGLTest, ScaledPicturesEqualTheStamp)
{
    osg::ImagePtr const disc = makeImage(96, 64), checkers = makeImage(96, 64), frame = makeFrame(420, 300, 255);
    drawDiscAndCheckers(disc->pixels, checkers->pixels);
    for (auto const& [name, picture] : {std::pair{"disc", disc}, {"checkers", checkers}, {"noise", makeNoise(96, 64)}})
    {
        osg::OverlayPtr const overlay = makePicture(picture);
        auto const draw = [&] { drawOver(frame, {overlay}); };
        for (float size : {2.0f, 3.3f, 20.6f, 33.3f, 63.9f, 64.8f, 80.2f, 133.3f, 256.0f})
        {
            overlay->size = size;
            overlay->offset = {size / 20.5f, size / 17};
            osg::ImagePtr const stamped = stampOver(frame, overlay);
            EXPECT_EQ(uploadsOf([&] { EXPECT_LE(difference(drawOver(frame, {overlay}), stamped), 1); }), 1u);
            EXPECT_GT(difference(frame, stamped), 50) << name << ' ' << size;
            EXPECT_EQ(uploadsOf(draw), 0u) << name << ' ' << size;
        }
        for (float size : {64.8f, 80.2f, 133.3f, 256.0f})
        {
            overlay->size = size;
            EXPECT_EQ(uploadsOf(draw), 0u) << "as in another viewport: " << size;
        }
        overlay->size = 63.9f;
        EXPECT_EQ(uploadsOf(draw), 1u) << "of sizes, the last four are kept";
        std::rotate(picture->pixels.begin(), picture->pixels.begin() + 4, picture->pixels.end());
        osg::markChanged(picture, osg::Image::PixelsFieldMask);
        EXPECT_LE(difference(drawOver(frame, {overlay}), stampOver(frame, overlay)), 1) << name << " changed";
        EXPECT_EQ(uploadsOf(draw), 0u) << name;
    }
}

TEST_P(OpenGLTest, PicturesLargerThanATextureAreFiltered)
{
    GLint most;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &most);
    for (auto const& [columns, size] : {std::pair{2, most + 1}, {1, most + 1}, {2, 8200}})
    {
        osg::OverlayPtr const overlay = makePicture(makeNoise(columns, 2), float(size));
        auto const [red, green, blue, alpha] = pixelAt(overlay->image, 0, 0);
        osg::ImagePtr const drawn = drawOver(makeImage(8, 8), {overlay});
        EXPECT_NEAR(pixelAt(drawn, 1, 1)[3], alpha, 1);
        EXPECT_NEAR(pixelAt(drawn, 1, 1)[0], red, 1);
    }
    EXPECT_EQ(action.getNumUploads(), 3u);
}

TEST_P(OpenGLTest, AssembledTilesEqualTheWhole)
{
    constexpr int width = 240, height = 160, columns = 3, rows = 2;
    osg::OverlayPtr const label = makeLabel(), picture = makePicture(makeNoise(7, 5), 31);
    picture->offset = {70.3f, 60.6f};
    osg::ImagePtr const frame = makeImage(width, height), whole = drawOver(frame, {label, picture});

    osg::TileCameraDecoratorPtr const tile = createTile(width, height);
    osg::ViewportPtr const viewport = makeViewport(width / columns, height / rows, tile);
    viewport->foregrounds = {label->foreground, picture->foreground};
    startFrom(frame);
    osg::ImagePtr const painted = makeImage(width, height);
    QImage device = toQImage(painted);
    QPainter painter(&device);
    PainterDrawAction painterAction(painter);
    for (int i = 0; i < rows * columns; ++i)
    {
        int const row = i / columns, column = i % columns;
        tile->left = float(column) / columns;
        tile->right = float(column + 1) / columns;
        tile->bottom = float(row) / rows;
        tile->top = float(row + 1) / rows;
        viewport->pixelLeft = column * width / columns;
        viewport->pixelBottom = row * height / rows;
        viewport->render(&action);
        viewport->render(&painterAction);
    }
    EXPECT_EQ(difference(readBack(width, height), whole), 0);
    painter.end();
    device = device.mirrored().convertToFormat(QImage::Format_RGBA8888_Premultiplied);
    std::copy_n(device.constBits(), painted->pixels.size(), painted->pixels.begin());
    EXPECT_LE(difference(painted, whole), 1) << "as the example of a renderer paints it";
}

TEST_P(OpenGLTest, StereoSqueezesTheLayout)
{
    osg::OverlayPtr const seen = makeSquare(20);
    seen->anchor = {1, 0};
    // The layout's size, twice as large in one direction, and that of a picture in it, half a pixel off the right edge.
    for (auto const& [aspect, width, height, pictureWidth, pictureHeight] :
         {std::tuple{2.0f, 200, 80, 2, 1}, {0.5f, 100, 160, 1, 2}})
    {
        auto const stereo = osg::create<osg::ShearedStereoCameraDecorator>();
        auto const perspective = osg::create<osg::PerspectiveCamera>();
        osg::ViewportPtr const viewport = makeViewport(100, 80, stereo);
        osg::setRefdCP(stereo->decoratee, perspective);
        perspective->aspect = aspect;
        osg::OverlayPtr const overlay =
            makePicture(makeImage(pictureWidth, pictureHeight, {255, 255, 255, 255}), 20.0f * float(pictureHeight));
        overlay->offset.x = -0.25f * float(pictureWidth);
        overlay->anchor = {1, 0};
        ztOverlays::updateOverlay(overlay, width, height);
        viewport->foregrounds = {overlay->foreground};
        EXPECT_EQ(difference(render(viewport, makeImage(100, 80)), stampOver(makeImage(100, 80), seen)), 0) << aspect;
    }
}

TEST_P(OpenGLTest, UploadsFollowTheImage)
{
    osg::NodePtr const root = makeScene();
    osg::OverlayPtr const text = makeText(""), picture = makeSquare(9);
    makeNode(text, root);
    makeNode(picture, root);
    osg::ViewportPtr const viewport = makeViewport(64, 64);
    startFrom(makeImage(64, 64));
    auto const write = [&](int frame) {
        text->text = std::to_string(frame);
        osg::markChanged(text, osg::Overlay::TextFieldMask);
    };
    auto const uploads = [&](int frames, std::function<void(int)> const& change) {
        return uploadsOf([&] {
            for (int frame = 0; frame < frames; ++frame)
            {
                change(frame);
                ztOverlays::updateAllOverlays(viewport);
                ztOverlays::drawOverlays(&action, viewport.get());
            }
        });
    };
    EXPECT_EQ(uploads(1, write), 2u);
    EXPECT_EQ(uploads(1000, [](int) {}), 0u);
    EXPECT_EQ(action.getNumDraws(), 2002u);
    EXPECT_EQ(uploads(100, write), 100u);
    EXPECT_EQ(uploads(10, [&](int frame) { text->offset.x = float(frame); }), 0u) << "placed";
    EXPECT_EQ(uploads(1, [&](int) { osg::markChanged(picture->image, osg::Image::PixelsFieldMask); }), 1u);
    EXPECT_EQ(uploads(1, [&](int) { textureOf(picture)->minFilter = GL_NEAREST; }), 0u) << "a filter";
    EXPECT_EQ(uploads(1, [&](int) { osg::setRefdCP(picture->image, makeImage(9, 13)), picture->size = 13; }), 1u);
    EXPECT_EQ(action.takeFailure(), "");
}

TEST_P(OpenGLTest, ObjectsGoWithTheirChunksAndWithRelease)
{
    // Textures, programs, buffers, vertex arrays and samplers.
    auto const countObjects = [] {
        std::array<int, 5> counts{};
        for (GLuint name = 1; name < 50; ++name)
        {
            counts[0] += glIsTexture(name);
            counts[1] += glIsProgram(name);
            counts[2] += glIsBuffer(name);
            counts[3] += glIsVertexArray(name);
            counts[4] += glIsSampler(name);
        }
        return counts;
    };
    osg::ImagePtr const frame = makeImage(32, 32);
    osg::OverlayPtr const staying = makeSquare(3);
    osg::NodePtr const going = ztOverlays::createOverlay(osg::NullFC);
    osg::addRef(going);
    drawOver(frame, {staying, overlayOf(going)});
    EXPECT_EQ(action.getNumTextures(), 2u);
    EXPECT_EQ(action.getNumPrograms(), 1u) << "one for all chunks of the same sources";
    osg::subRef(going);
    chunkOf<osg::ShaderChunk>(staying, 2)->fragmentProgram += "// other sources";
    drawOver(frame, {staying});
    EXPECT_EQ(action.getNumTextures(), 1u);
    EXPECT_EQ(action.getNumPrograms(), 1u);
    EXPECT_EQ(countObjects(), (std::array{2, 1, 1, 1, 1})) << "one texture is the frame's";
    action.release();
    EXPECT_EQ(action.getNumTextures() + action.getNumPrograms(), 0u);
    EXPECT_EQ(countObjects(), (std::array{1, 0, 0, 0, 0}));
    EXPECT_EQ(pixelAt(drawOver(frame, {staying}), 0, 0)[0], 255) << "all made anew";
    EXPECT_EQ(countObjects(), (std::array{2, 1, 1, 1, 1}));
}

/// Can't be drawn.
class FailingForeground : public osg::PolygonForeground2
{
    ZT_CONTAINER(FailingForeground)

  public:
    void draw(osg::DrawActionBase*, osg::Viewport*) override { throw std::runtime_error("can't draw"); }
};

ZT_CONTAINER_TYPE(FailingForeground, PolygonForeground2);

/// All that the context tells of its state: the first values of every parameter of OpenGL 4.5, and 0 for other numbers.
std::vector<std::array<GLint, 4>> readState()
{
    std::vector<std::array<GLint, 4>> state(0x9360);
    for (GLenum parameter = 0; parameter < state.size(); ++parameter)
    {
        std::array<GLint, 1024> values{};
        if (parameter != GL_TIMESTAMP)
            glGetIntegerv(parameter, values.data());
        std::copy_n(values.begin(), 4, state[parameter].begin());
    }
    while (glGetError() != GL_NO_ERROR)
        continue;
    return state;
}

/// The first parameter that has changed, 0 for none.
std::size_t changeSince(std::vector<std::array<GLint, 4>> const& before)
{
    auto const now = readState();
    auto const change = std::mismatch(now.begin(), now.end(), before.begin()).first;
    return change == now.end() ? 0 : std::size_t(change - now.begin());
}

/// Whether blending is on or off for each draw buffer.
bool hasBlendingOfEach(bool isES)
{
    return !isES || epoxy_gl_version() >= 32;
}

/// Whether each has factors of its own.
bool hasFactorsOfEach(bool isES)
{
    return epoxy_gl_version() >= (isES ? 32 : 40);
}

/// What a host may have set, so that nothing would be drawn, or something else.
void spoilState(bool isES)
{
    glDisable(GL_BLEND);
    for (int capability : {GL_CULL_FACE, GL_DEPTH_TEST, GL_SCISSOR_TEST, GL_STENCIL_TEST, GL_RASTERIZER_DISCARD,
                           GL_SAMPLE_ALPHA_TO_COVERAGE, GL_SAMPLE_COVERAGE})
        glEnable(GLenum(capability));
    glCullFace(GL_FRONT_AND_BACK);
    glDepthFunc(GL_NEVER);
    if (!isES && epoxy_gl_version() >= 45)
        glClipControl(GL_UPPER_LEFT, GL_ZERO_TO_ONE);
    glScissor(1, 2, 3, 4);
    glViewport(5, 6, 7, 8);
    if (!isES && epoxy_gl_version() >= 41)
        glViewportIndexedf(1, 1.5f, 2, 3, 4);
    glBlendFuncSeparate(GL_DST_COLOR, GL_ZERO, GL_ZERO, GL_ONE);
    glBlendEquationSeparate(GL_FUNC_SUBTRACT, GL_FUNC_REVERSE_SUBTRACT);
    int value = 8;
    for (int parameter : {GL_UNPACK_ALIGNMENT, GL_UNPACK_ROW_LENGTH, GL_UNPACK_SKIP_ROWS, GL_UNPACK_SKIP_PIXELS})
        glPixelStorei(GLenum(parameter), value--);
    if (!isES)
    {
        for (int capability : {GL_COLOR_LOGIC_OP, GL_FRAMEBUFFER_SRGB, GL_POLYGON_SMOOTH, GL_SAMPLE_ALPHA_TO_ONE})
            glEnable(GLenum(capability));
        glLogicOp(GL_XOR);
        glPolygonMode(GL_FRONT_AND_BACK, GL_POINT);
    }
    if (hasBlendingOfEach(isES))
        glEnablei(GL_BLEND, 1);
    if (hasFactorsOfEach(isES))
        glBlendFunci(1, GL_SRC_COLOR, GL_ONE);
}

TEST_P(OpenGLTest, StateIsAfterwardsAsBeforeAndHasNoEffect)
{
    osg::OverlayPtr const label = makeLabel();
    osg::ImagePtr const frame = makeFrame(64, 48, 255), expected = drawOver(frame, {label});
    osg::OpenGLDrawAction other;
    label->foreground->draw(&other, makeViewport(64, 48).get());
    GLuint lastProgram = 50;
    while (!glIsProgram(lastProgram))
        --lastProgram;
    startFrom(frame);
    glUseProgram(lastProgram);
    glBindTexture(GL_TEXTURE_2D, make(glGenTextures));
    glBindSampler(0, make(glGenSamplers));
    glBindVertexArray(make(glGenVertexArrays));
    glBindBuffer(GL_ARRAY_BUFFER, make(glGenBuffers));
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, make(glGenBuffers));
    spoilState(GetParam());
    auto const atUnit0 = readState();
    glActiveTexture(GL_TEXTURE3);
    glBindTexture(GL_TEXTURE_2D, make(glGenTextures));
    auto const atUnit3 = readState();
    osg::ViewportPtr const viewport = makeViewport(64, 48);
    osg::markChanged(shownImage(label), osg::AllFieldsMask); // so that it uploads, too
    glEnable(GL_INVALID_ENUM);                               // an error that isn't the draw's
    label->foreground->draw(&action, viewport.get());
    EXPECT_EQ(action.takeFailure(), "");
    EXPECT_EQ(changeSince(atUnit3), 0u);
    glActiveTexture(GL_TEXTURE0);
    EXPECT_EQ(changeSince(atUnit0), 0u);
    EXPECT_TRUE(!hasBlendingOfEach(GetParam()) || glIsEnabledi(GL_BLEND, 1));
    GLint factor = GL_SRC_COLOR;
    if (hasFactorsOfEach(GetParam()))
        glGetIntegeri_v(GL_BLEND_SRC_RGB, 1, &factor);
    EXPECT_EQ(factor, GL_SRC_COLOR);
    if (!GetParam() && epoxy_gl_version() >= 41)
    {
        std::array<float, 4> second;
        glGetFloati_v(GL_VIEWPORT, 1, second.data());
        EXPECT_EQ(second, (std::array{1.5f, 2.0f, 3.0f, 4.0f}));
    }
    EXPECT_EQ(difference(readBack(64, 48), expected), 0);
}

TEST_P(OpenGLTest, AFrameOfSeveralViewportsThatFailsBeforeItsEndShowsWhatCameBeforeAndLeavesTheState)
{
    osg::OverlayPtr const label = makeLabel();
    drawOver(makeFrame(64, 48, 255), {label});
    osg::ViewportPtr const viewport = makeViewport(64, 48);
    spoilState(GetParam());
    auto const before = readState();
    viewport->foregrounds = {label->foreground, label->foreground, hold(osg::create<FailingForeground>())};
    osg::UInt64 const draws = action.getNumDraws();
    auto const drawFrame = [&] {
        osg::DrawFrame const drawn(action);
        label->foreground->draw(&action, makeViewport(10, 20).get());
        viewport->render(&action);
    };
    EXPECT_THROW(drawFrame(), std::runtime_error);
    EXPECT_EQ(changeSince(before), 0u);
    EXPECT_EQ(action.getNumDraws(), draws + 3);
}

/// Draws with an action into a viewport.
struct Brush
{
    osg::DrawActionBase& action;
    osg::ViewportPtr viewport;

    void draw(osg::OverlayPtr const& overlay, int left) const
    {
        viewport->pixelLeft = left;
        overlay->foreground->draw(&action, viewport.get());
    }

    void show(osg::OverlayPtr const& overlay, int left) const
    {
        ztOverlays::updateOverlay(overlay, 32, 32);
        draw(overlay, left);
    }
};

void drawChanging(Brush const& brush, osg::OverlayPtr const& square)
{
    osg::PolygonForeground2Ptr const foreground = square->foreground;
    brush.show(square, 0);
    for (int value : {50, 100})
    {
        std::fill(square->image->pixels.begin(), square->image->pixels.end(), osg::UInt8(value));
        osg::markChanged(square->image, osg::Image::PixelsFieldMask);
        square->size += 5; // resampled
        brush.show(square, value / 2);
    }
    chunkOf<osg::BlendChunk>(square, 1)->destFactor = GL_ONE;
    foreground->positions[2].x -= 9; // a quadrangle that the chunk's filters draw
    SceneTest::textureOf(square)->minFilter = GL_LINEAR_MIPMAP_LINEAR;
    brush.draw(square, 3);
    for (std::string const gray : {"0.3", "0.6"})
    {
        chunkOf<osg::ShaderChunk>(square, 2)->fragmentProgram =
            "out lowp vec4 color; void main() { color = vec4(" + gray + "); }";
        osg::markChanged(chunkOf<osg::ShaderChunk>(square, 2), osg::ShaderChunk::FragmentProgramFieldMask);
        brush.draw(square, 9);
    }
    foreground->positions.resize(2);
    brush.draw(square, 0);
}

void drawGoing(Brush const& brush, osg::ImagePtr const& picture, float x)
{
    osg::RefPtr<osg::Node> const node(ztOverlays::createOverlay(osg::NullFC));
    osg::OverlayPtr const overlay = SceneTest::overlayOf(node);
    overlay->contentType = osg::Overlay::ContentImage;
    osg::setRefdCP(overlay->image, picture);
    overlay->offset.x = x;
    brush.show(overlay, 0);
}

// What is drawn changes or goes before the frame ends.
TEST_P(OpenGLTest, AFrameShowsWhatItsPolygonsShowOneByOne)
{
    osg::ImagePtr const frame = makeFrame(64, 32, 255);
    Brush const brush{action, makeViewport(32, 32)};
    auto const drawAll = [&] {
        drawChanging(brush, makeSquare(20, {200, 0, 0, 255}));
        for (float const x : {0.0f, 5.0f, 10.0f})
            drawGoing(brush, makeNoise(5, 5), x);
        brush.show(makeLabel(), 32);
        osg::ViewportPtr const changing = makeViewport(16, 16);
        osg::OverlayPtr const square = makeSquare(9);
        brush.show(square, 0);
        for (auto const field : {&osg::Viewport::pixelLeft, &osg::Viewport::pixelBottom, &osg::Viewport::pixelWidth,
                                 &osg::Viewport::pixelHeight, &osg::Viewport::pixelLeft})
        {
            *changing.*field += 5;
            square->foreground->positions[2].y = square->foreground->positions[3].y += 1; // resampled
            square->foreground->draw(&action, changing.get());
        }
        for (int const width : {21, 40})
        {
            osg::setRefdCP(changing->camera, createTile(width, 40));
            square->foreground->draw(&action, changing.get());
        }
        osg::OverlayPtr const last = makeSquare(30, {0, 0, 200, 255});
        ztOverlays::updateOverlay(last, 40, 40);
        for (auto const& [field, change] : // of the same layout
             {std::pair{&osg::Viewport::pixelWidth, 7}, {&osg::Viewport::pixelHeight, -7}})
        {
            *changing.*field += change;
            last->foreground->draw(&action, changing.get());
        }
    };
    osg::ImagePtr shown[2];
    for (bool inFrame : {false, true})
    {
        random.seed(3);
        startFrom(frame);
        osg::UInt64 const draws = action.getNumDraws();
        if (inFrame)
        {
            osg::DrawFrame const whole(action);
            brush.viewport->render(&action); // a frame within, of none
            drawAll();
            EXPECT_EQ(action.getNumDraws(), draws) << "nothing is drawn before the end";
            EXPECT_EQ(difference(readBack(64, 32), frame), 0);
        }
        else
            drawAll();
        EXPECT_EQ(action.getNumDraws(), draws + 20);
        EXPECT_NE(action.takeFailure().find("corners"), std::string::npos);
        shown[inFrame] = readBack(64, 32);
    }
    EXPECT_EQ(difference(shown[0], shown[1]), 0);
    EXPECT_GT(difference(shown[0], frame), 50);
}

TEST_P(OpenGLTest, ChunksMeanWhatTheySay)
{
    // A picture of black and white, above it gray, four times as large, and by a hair not shown as a whole.
    osg::ImagePtr const image = makeImage(2, 2, {100, 100, 100, 255}), frame = makeImage(8, 8, {100, 100, 100, 255});
    std::fill_n(&image->pixels[0], 3, 0);
    std::fill_n(&image->pixels[4], 4, 255);
    osg::OverlayPtr const overlay = makePicture(image, 8);
    osg::TextureChunkPtr const texture = textureOf(overlay);
    osg::BlendChunkPtr const blend = chunkOf<osg::BlendChunk>(overlay, 1);
    overlay->foreground->texCoords[2].x = 1.0f - 1e-6f;
    auto const column = [&](int x) { return pixelAt(drawOver(frame, {overlay}), x, 0)[0]; };

    EXPECT_NEAR(column(3), 255 * 3 / 8, 2) << "linear";
    EXPECT_EQ(column(0), 0) << "clamped";
    texture->wrapS = GL_REPEAT;
    EXPECT_NEAR(column(0), 255 * 3 / 8, 2) << "the other end comes round";
    texture->wrapS = GL_CLAMP_TO_EDGE;
    texture->wrapT = GL_REPEAT;
    EXPECT_NEAR(column(0), 100 * 3 / 8, 2);
    texture->magFilter = GL_NEAREST;
    EXPECT_EQ(std::pair(column(3), column(4)), std::pair(0, 255));
    blend->srcFactor = blend->destFactor = GL_ONE;
    EXPECT_EQ(column(0), 100) << "added";
    blend->srcFactor = blend->destFactor = GL_ZERO;
    EXPECT_EQ(pixelAt(drawOver(frame, {overlay}), 0, 0), (std::array{0, 0, 0, 0}));
}

// Eight texels a pixel in stripes: a mipmap evens them out, the nearest texel doesn't.
TEST_P(OpenGLTest, MipmapsAreOfTheNewestPixels)
{
    osg::ImagePtr const frame = makeImage(8, 8);
    osg::OverlayPtr const striped = makePicture(makeImage(64, 64, {0, 0, 0, 255}), 8);
    striped->foreground->texCoords[2].x = 1.0f - 1e-6f;
    for (std::size_t i = 0; i < striped->image->pixels.size(); i += 8)
        std::fill_n(&striped->image->pixels[i], 4, 255);
    auto const gray = [&] { return pixelAt(drawOver(frame, {striped}), 3, 1)[0]; };
    EXPECT_NEAR(gray(), 128, 3);
    textureOf(striped)->minFilter = GL_NEAREST;
    EXPECT_EQ(gray() % 255, 0);
    for (auto const& [filter, value] : {std::pair{GL_NEAREST_MIPMAP_NEAREST, 200}, {GL_LINEAR_MIPMAP_LINEAR, 255}})
    {
        textureOf(striped)->minFilter = GLenum(filter);
        std::fill(striped->image->pixels.begin(), striped->image->pixels.end(), osg::UInt8(value));
        osg::markChanged(striped->image, osg::Image::PixelsFieldMask);
        EXPECT_NEAR(gray(), value, 1) << filter;
    }
}

// Alpha 128 and colour 64, over black.
TEST_P(OpenGLTest, ShaderChunksMeanWhatTheySay)
{
    osg::OverlayPtr const square = makeSquare(4, {64, 64, 64, 128});
    for (auto const& [straightAlpha, opaque, expected] :
         {std::tuple{false, false, 64}, {true, false, 32}, {false, true, 128}, {true, true, 64}})
    {
        osg::StateChunkPtr const other = hold(ztOpenSGExt::createBackplateShader(straightAlpha, opaque));
        chunkOf<osg::ShaderChunk>(square, 2)->fragmentProgram =
            osg::dynamicCast<osg::ShaderChunk>(other)->fragmentProgram;
        EXPECT_NEAR(pixelAt(drawOver(makeImage(8, 8), {square}), 1, 1)[0], expected, 1) << straightAlpha << opaque;
    }
    osg::ShaderChunkPtr const shader = chunkOf<osg::ShaderChunk>(square, 2);
    std::string source = shader->fragmentProgram;
    source.replace(source.find("1.0;"), 3, "0.5");
    shader->fragmentProgram = source;
    EXPECT_NEAR(pixelAt(drawOver(makeImage(8, 8), {square}), 1, 1)[0], 32, 1) << "sources of the same length";
}

void setLargeImage(osg::OverlayPtr const& overlay, int wide, int high)
{
    GLint most;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &most);
    SceneTest::textureOf(overlay)->setImage(ztImage::create(1 + most * wide, 1 + most * high));
}

void keepChunks(osg::OverlayPtr const& overlay, std::size_t count)
{
    auto const material = osg::create<osg::ChunkMaterial>();
    for (std::size_t i = 0; i < count; ++i)
        material->addChunk(chunkOf<osg::StateChunk>(overlay, i), osg::ChunkMaterial::AutoSlot);
    osg::setRefdCP<osg::Material>(overlay->foreground->material, material);
}

using O = osg::OverlayPtr const&;
using V = osg::ViewportPtr const&;
std::pair<char const*, void (*)(O, V)> const spoilers[] = {
    {"no texture, blend or shader chunk", [](O o, V) { osg::setRefdCP(o->foreground->material, osg::NullFC); }},
    {"no texture, blend or shader chunk", [](O o, V) { keepChunks(o, 0); }},
    {"no texture, blend or shader chunk", [](O o, V) { keepChunks(o, 1); }},
    {"no texture, blend or shader chunk", [](O o, V) { keepChunks(o, 2); }},
    {"no image", [](O o, V) { SceneTest::textureOf(o)->setImage(osg::NullFC); }},
    {"no image", [](O o, V) { SceneTest::textureOf(o)->setImage(osg::create<osg::Image>()); }},
    {"limit", [](O o, V) { setLargeImage(o, 1, 0); }},
    {"limit", [](O o, V) { setLargeImage(o, 0, 1); }},
    {"compile", [](O o, V) { chunkOf<osg::ShaderChunk>(o, 2)->fragmentProgram = "void main() { broken }"; }},
    {"link", [](O o, V) { chunkOf<osg::ShaderChunk>(o, 2)->vertexProgram = "out int imagePoint; void main() {}"; }},
    {"OpenGL error",
     [](O o, V) {
         chunkOf<osg::ShaderChunk>(o, 2)->fragmentProgram =
             "precision highp float; uniform sampler2D image; uniform samplerCube other; out vec4 color;"
             "void main() { color = texture(image, vec2(0)) + texture(other, vec3(1)); }";
     }},
    {"OpenGL error",
     [](O o, V) {
         chunkOf<osg::ShaderChunk>(o, 2)->vertexProgram =
             "uniform float pixelsToClip; out vec2 imagePoint; void main() { gl_Position = vec4(pixelsToClip);"
             "imagePoint = vec2(0); }";
     }},
    {"OpenGL error", [](O o, V) { SceneTest::textureOf(o)->wrapS = 12345; }},
    {"OpenGL error",
     [](O o, V) { o->foreground->texCoords[2].x = 0.5f, SceneTest::textureOf(o)->minFilter = 12345; }},
    {"OpenGL error", [](O o, V) { chunkOf<osg::BlendChunk>(o, 1)->srcFactor = 7; }},
    {"OpenGL error", [](O, V) { glBindFramebuffer(GL_FRAMEBUFFER, 0); }},
    {"shows nothing", [](O, V v) { v->pixelWidth = 0; }},
    {"shows nothing", [](O, V v) { v->pixelHeight = 0; }},
    {"shows nothing", [](O, V v) { osg::setRefdCP(v->camera, SceneTest::createTile(8, 8)), v->pixelWidth = -8; }},
    {"shows nothing", [](O, V v) { osg::setRefdCP(v->camera, SceneTest::createTile(8, 8)), v->pixelHeight = -8; }},
    {"corners", [](O o, V) { o->foreground->positions.resize(2); }},
    {"corners", [](O o, V) { o->foreground->texCoords.resize(3); }},
    {"no OpenGL context", [](O, V) { eglMakeCurrent(eglGetCurrentDisplay(), nullptr, nullptr, nullptr); }},
};

TEST_P(OpenGLTest, WhatCannotBeDrawnLeavesNoTrace)
{
    osg::ViewportPtr viewport;
    osg::ImagePtr const frame = makeImage(8, 8);
    for (auto const& [reason, spoil] : spoilers)
        for (bool inFrame : {false, true})
        {
            viewport = makeViewport(8, 8);
            osg::OverlayPtr const overlay = makeSquare(8), good = makeSquare(4);
            drawOver(frame, {overlay, good});
            osg::UInt64 const draws = action.getNumDraws();
            startFrom(frame);
            auto whole = inFrame ? std::make_unique<osg::DrawFrame>(action) : nullptr;
            spoil(overlay, viewport);
            overlay->foreground->draw(&action, viewport.get());
            context.makeCurrent();
            EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR)) << reason;
            glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
            good->foreground->draw(&action, makeViewport(8, 8).get());
            whole.reset();
            EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR)) << reason;
            EXPECT_EQ(action.getNumDraws(), draws + 1) << reason;
            EXPECT_NE(action.takeFailure().find(reason), std::string::npos) << reason;
            EXPECT_EQ(difference(readBack(8, 8), stampOver(frame, good)), 0) << reason;
        }
    SurfacelessContext const other(GetParam());
    makeSquare(8)->foreground->draw(&action, viewport.get());
    context.leave();
    makeSquare(8)->foreground->draw(&action, viewport.get());
    EXPECT_EQ(action.takeFailure(), "the current OpenGL context isn't the action's") << "the first reason";
}

TEST_P(OpenGLTest, RecoversFromWhatIsNoFrameAndFromLostContexts)
{
    osg::OverlayPtr const square = makeSquare(8, {0, 200, 0, 255});
    osg::ImagePtr const frame = makeImage(8, 8), expected = stampOver(frame, square);
    osg::ViewportPtr const viewport = makeViewport(8, 8);
    viewport->foregrounds = {square->foreground};
    action.endFrame();
    EXPECT_EQ(difference(drawOver(frame, {square}), expected), 0) << "an end without a beginning";
    for (auto const& [isInFrame, isLost] : {std::pair{true, false}, {true, true}, {false, true}})
    {
        auto other = std::make_unique<SurfacelessContext>(GetParam());
        action.release();
        startFrom(frame, make(glGenTextures), make(glGenFramebuffers));
        {
            auto const cut = isInFrame ? std::make_unique<osg::DrawFrame>(action) : nullptr;
            viewport->render(&action);
            EXPECT_EQ(action.takeFailure(), "");
            other->leave();
            if (isLost)
                other.reset();
            else
                context.makeCurrent();
            viewport->render(&action);
        }
        EXPECT_NE(action.takeFailure(), "") << isInFrame << isLost;
        context.makeCurrent();
        if (!isInFrame)
            action.release();
        EXPECT_EQ(difference(drawOver(frame, {square}), expected), 0) << isInFrame << isLost;
    }
}

TEST_P(OpenGLTest, EachThreadDrawsInAContextOfItsOwn)
{
    osg::ImagePtr const frame = makeFrame(64, 48, 255), drawn[] = {makeImage(64, 48), makeImage(64, 48)};
    osg::OverlayPtr const pictures[] = {makePicture(makeNoise(20, 10), 14), makePicture(makeNoise(20, 10), 33)};
    auto const draw = [&](std::size_t i, osg::ViewportPtr const& viewport) {
        SurfacelessContext const own(GetParam());
        osg::OpenGLDrawAction ownAction;
        GLuint const texture = make(glGenTextures), buffer = make(glGenFramebuffers);
        ztOverlays::updateOverlay(pictures[i], 64, 48);
        for (int step = 0; step < 20; ++step)
        {
            startFrom(frame, texture, buffer);
            pictures[i]->foreground->draw(&ownAction, viewport.get());
            EXPECT_EQ(ownAction.takeFailure(), "");
        }
        glReadPixels(0, 0, 64, 48, GL_RGBA, GL_UNSIGNED_BYTE, drawn[i]->pixelBuffer());
        ownAction.release();
        own.leave();
    };
    std::thread first(draw, 0u, makeViewport(64, 48)), second(draw, 1u, makeViewport(64, 48));
    first.join();
    second.join();
    for (std::size_t i : {0u, 1u})
        EXPECT_LE(difference(drawn[i], stampOver(frame, pictures[i])), 1);
}

} // namespace
