// Overlays drawn with OpenGL into an image, against the same overlays stamped onto one. In both profiles,
// without a window.
#include "TestSupport.h"

#include "OSGOpenGLDrawAction.h"
#include "ztOpenSGExt.h"

#include <epoxy/egl.h>
#include <epoxy/gl.h>

#include <cmath>
#include <cstdlib>
#include <random>

namespace
{

/// An OpenGL context without a surface, current from its start on.
class SurfacelessContext
{
  public:
    explicit SurfacelessContext(bool isES)
    {
        _display = eglGetPlatformDisplayEXT(EGL_PLATFORM_SURFACELESS_MESA, EGL_DEFAULT_DISPLAY, nullptr);
        if (!eglInitialize(_display, nullptr, nullptr))
            return;
        eglBindAPI(isES ? EGL_OPENGL_ES_API : EGL_OPENGL_API);
        EGLint const attributes[] = {EGL_CONTEXT_MAJOR_VERSION, 3, EGL_CONTEXT_MINOR_VERSION, isES ? 0 : 3, EGL_NONE};
        _context = eglCreateContext(_display, EGL_NO_CONFIG_KHR, EGL_NO_CONTEXT, attributes);
        makeCurrent();
    }

    ~SurfacelessContext() { eglDestroyContext(_display, _context); }

    bool isThere() const { return _context != EGL_NO_CONTEXT; }
    void makeCurrent() const { eglMakeCurrent(_display, EGL_NO_SURFACE, EGL_NO_SURFACE, _context); }
    void leave() const { eglMakeCurrent(_display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT); }

  private:
    EGLDisplay _display;
    EGLContext _context = EGL_NO_CONTEXT;
};

/// A new object of OpenGL.
template <class Generate>
GLuint make(Generate const& generate)
{
    GLuint name = 0;
    generate(1, &name);
    return name;
}

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
    void startFrom(osg::ImagePtr const& frame)
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
    std::mt19937 random(1);
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
}

TEST_P(OpenGLTest, ScaledPicturesResembleTheStamp)
{
    // A disc with an edge a pixel wide before colours that change slowly.
    osg::ImagePtr const picture = makeImage(240, 160), frame = makeFrame(500, 350, 255);
    for (std::size_t i = 0; i < picture->pixels.size(); ++i)
    {
        double const x = double(i / 4 % 240), y = double(i / 960);
        double const disc = std::clamp(60.5 - std::hypot(x - 120, y - 80), 0.0, 1.0);
        double const alpha = 100 + 155 * disc,
                     color = 0.5 + 0.5 * std::sin(x * 0.05 + double(i % 4)) * std::cos(y * 0.06);
        picture->pixels[i] = osg::UInt8(i % 4 == 3 ? alpha : alpha * color);
    }
    osg::OverlayPtr const overlay = makePicture(picture);
    for (float size : {320.9f, 200.0f, 120.7f, 80.2f, 33.3f, 20.6f})
    {
        overlay->size = size;
        overlay->offset = {size / 20.5f, size / 17};
        osg::ImagePtr const stamped = stampOver(frame, overlay), drawn = drawOver(frame, {overlay});
        double squares = 0, covered = 0;
        for (std::size_t i = 0; i < frame->pixels.size(); ++i)
        {
            squares += std::pow(drawn->pixels[i] - stamped->pixels[i], 2);
            covered += frame->pixels[i] != stamped->pixels[i];
        }
        double const most = 255.0 * 255.0 / std::pow(10, 3.5); // a peak signal-to-noise ratio of 35 dB
        EXPECT_LE(squares / covered, most) << size;
    }
}

TEST_P(OpenGLTest, AssembledTilesEqualTheWhole)
{
    constexpr int width = 240, height = 160, columns = 3, rows = 2;
    osg::OverlayPtr const label = makeLabel(), picture = makePicture(makeImage(7, 5, {0, 90, 30, 120}), 31);
    picture->offset = {70.3f, 60.6f};
    osg::ImagePtr const frame = makeImage(width, height), whole = drawOver(frame, {label, picture});

    osg::TileCameraDecoratorPtr const tile = createTile(width, height);
    osg::ViewportPtr const viewport = makeViewport(width / columns, height / rows, tile);
    viewport->foregrounds = {label->foreground, picture->foreground};
    startFrom(frame);
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
    }
    EXPECT_EQ(difference(readBack(width, height), whole), 0);
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
        osg::UInt64 const before = action.getNumUploads();
        for (int frame = 0; frame < frames; ++frame)
        {
            change(frame);
            ztOverlays::updateAllOverlays(viewport);
            ztOverlays::drawOverlays(&action, viewport.get());
        }
        return action.getNumUploads() - before;
    };
    EXPECT_EQ(uploads(1, write), 2u);
    EXPECT_EQ(uploads(1000, [](int) {}), 0u);
    EXPECT_EQ(action.getNumDraws(), 2002u);
    EXPECT_EQ(uploads(100, write), 100u);
    EXPECT_EQ(uploads(10, [&](int frame) { text->offset.x = float(frame); }), 0u) << "placed";
    EXPECT_EQ(uploads(1, [&](int) { osg::markChanged(picture->image, osg::Image::PixelsFieldMask); }), 1u);
    EXPECT_EQ(uploads(1, [&](int) { textureOf(picture)->minFilter = GL_NEAREST; }), 0u) << "a filter";
}

TEST_P(OpenGLTest, ObjectsGoWithTheirChunksAndWithRelease)
{
    // Textures, programs, buffers and vertex arrays.
    auto const countObjects = [] {
        std::array<int, 4> counts{};
        for (GLuint name = 1; name < 50; ++name)
        {
            counts[0] += glIsTexture(name);
            counts[1] += glIsProgram(name);
            counts[2] += glIsBuffer(name);
            counts[3] += glIsVertexArray(name);
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
    EXPECT_EQ(countObjects(), (std::array{2, 1, 1, 1})) << "one texture is the frame's";
    action.release();
    EXPECT_EQ(action.getNumTextures(), 0u);
    EXPECT_EQ(countObjects(), (std::array{1, 0, 0, 0}));
    EXPECT_EQ(pixelAt(drawOver(frame, {staying}), 0, 0)[0], 255) << "all made anew";
}

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
    glDisable(GL_BLEND);
    glUseProgram(lastProgram);
    glBindTexture(GL_TEXTURE_2D, make(glGenTextures));
    glBindSampler(0, make(glGenSamplers));
    glBindVertexArray(make(glGenVertexArrays));
    glBindBuffer(GL_ARRAY_BUFFER, make(glGenBuffers));
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, make(glGenBuffers));
    for (int capability : {GL_CULL_FACE, GL_DEPTH_TEST, GL_SCISSOR_TEST, GL_STENCIL_TEST, GL_RASTERIZER_DISCARD,
                           GL_SAMPLE_ALPHA_TO_COVERAGE, GL_SAMPLE_COVERAGE})
        glEnable(GLenum(capability));
    glCullFace(GL_FRONT_AND_BACK);
    glDepthFunc(GL_NEVER);
    if (!GetParam() && epoxy_gl_version() >= 45)
        glClipControl(GL_UPPER_LEFT, GL_ZERO_TO_ONE);
    glScissor(1, 2, 3, 4);
    glViewport(5, 6, 7, 8);
    glBlendFuncSeparate(GL_DST_COLOR, GL_ZERO, GL_ZERO, GL_ONE);
    glBlendEquationSeparate(GL_FUNC_SUBTRACT, GL_FUNC_REVERSE_SUBTRACT);
    int value = 8;
    for (int parameter : {GL_UNPACK_ALIGNMENT, GL_UNPACK_ROW_LENGTH, GL_UNPACK_SKIP_ROWS, GL_UNPACK_SKIP_PIXELS})
        glPixelStorei(GLenum(parameter), value--);
    if (!GetParam())
    {
        for (int capability : {GL_COLOR_LOGIC_OP, GL_FRAMEBUFFER_SRGB, GL_POLYGON_SMOOTH, GL_SAMPLE_ALPHA_TO_ONE})
            glEnable(GLenum(capability));
        glLogicOp(GL_XOR);
        glPolygonMode(GL_FRONT_AND_BACK, GL_POINT);
        glEnablei(GL_BLEND, 1);
    }
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
    EXPECT_TRUE(GetParam() || glIsEnabledi(GL_BLEND, 1));
    EXPECT_EQ(difference(readBack(64, 48), expected), 0);
}

TEST_P(OpenGLTest, ChunksMeanWhatTheySay)
{
    // A picture of black and white, above it gray, four times as large.
    osg::ImagePtr const image = makeImage(2, 2, {100, 100, 100, 255}), frame = makeImage(8, 8, {100, 100, 100, 255});
    std::fill_n(&image->pixels[0], 3, 0);
    std::fill_n(&image->pixels[4], 4, 255);
    osg::OverlayPtr const overlay = makePicture(image, 8);
    osg::TextureChunkPtr const texture = textureOf(overlay);
    osg::BlendChunkPtr const blend = chunkOf<osg::BlendChunk>(overlay, 1);
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

    // Eight texels a pixel in stripes: a mipmap evens them out, the nearest texel doesn't.
    osg::OverlayPtr const striped = makePicture(makeImage(64, 64, {0, 0, 0, 255}), 8);
    for (std::size_t i = 0; i < striped->image->pixels.size(); i += 8)
        std::fill_n(&striped->image->pixels[i], 4, 255);
    auto const gray = [&] { return pixelAt(drawOver(frame, {striped}), 3, 1)[0]; };
    EXPECT_NEAR(gray(), 128, 3);
    textureOf(striped)->minFilter = GL_NEAREST;
    EXPECT_EQ(gray() % 255, 0);
    textureOf(striped)->minFilter = GL_LINEAR_MIPMAP_LINEAR;
    std::fill(striped->image->pixels.begin(), striped->image->pixels.end(), 255);
    osg::markChanged(striped->image, osg::Image::PixelsFieldMask);
    EXPECT_EQ(gray(), 255) << "of the new pixels";

    // Alpha 128 and colour 64, over black.
    osg::OverlayPtr const square = makeSquare(4, {64, 64, 64, 128});
    for (auto const& [straightAlpha, opaque, expected] :
         {std::tuple{false, false, 64}, {true, false, 32}, {false, true, 128}, {true, true, 64}})
    {
        osg::StateChunkPtr const other = hold(ztOpenSGExt::createBackplateShader(straightAlpha, opaque));
        chunkOf<osg::ShaderChunk>(square, 2)->fragmentProgram =
            osg::dynamicCast<osg::ShaderChunk>(other)->fragmentProgram;
        EXPECT_NEAR(pixelAt(drawOver(makeImage(8, 8), {square}), 1, 1)[0], expected, 1) << straightAlpha << opaque;
    }
}

TEST_P(OpenGLTest, OnlyWholeRectanglesLieOnWholePixels)
{
    osg::OverlayPtr const overlay = makeSquare(8);
    osg::ViewportPtr const viewport = makeViewport(16, 16);
    osg::ImagePtr const frame = makeImage(16, 16);
    ztOverlays::updateOverlay(overlay, 16, 16);
    viewport->foregrounds = {overlay->foreground};
    // Of a black left and a white right half the left one, enlarged.
    for (std::size_t i = 0; i < 8 * 8 * 4; ++i)
        overlay->image->pixels[i] = i / 4 % 8 < 4 && i % 4 < 3 ? 0 : 255;
    overlay->foreground->texCoords[1].x = overlay->foreground->texCoords[2].x = 0.5f;
    EXPECT_NEAR(pixelAt(render(viewport, frame), 7, 0)[0], 64, 20) << "a linear mixture";
    // A triangle whose third corner is close to its first.
    std::fill(overlay->image->pixels.begin(), overlay->image->pixels.end(), 255);
    osg::markChanged(overlay->image, osg::Image::PixelsFieldMask);
    static_cast<std::vector<osg::Pnt2f>&>(overlay->foreground->positions) = {{0, 0}, {16, 0}, {1.9f, 16}};
    EXPECT_EQ(pixelAt(render(viewport, frame), 12, 2)[0], 255);
}

TEST_P(OpenGLTest, WhatCannotBeDrawnLeavesNoTrace)
{
    GLint most;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &most);
    osg::ViewportPtr viewport;
    using O = osg::OverlayPtr const&;
    std::pair<char const*, std::function<void(O)>> const spoilers[] = {
        {"no texture, blend or shader chunk", [](O o) { osg::setRefdCP(o->foreground->material, osg::NullFC); }},
        {"no texture, blend or shader chunk",
         [](O o) { osg::setRefdCP(o->foreground->material, osg::create<osg::ChunkMaterial>()); }},
        {"no image", [](O o) { textureOf(o)->setImage(osg::NullFC); }},
        {"no image", [this](O o) { textureOf(o)->setImage(makeImage(0, 0)); }},
        {"limit", [&](O o) { textureOf(o)->setImage(makeImage(most + 1, 1)); }},
        {"compile", [](O o) { chunkOf<osg::ShaderChunk>(o, 2)->fragmentProgram = "void main() { broken }"; }},
        {"link", [](O o) { chunkOf<osg::ShaderChunk>(o, 2)->vertexProgram = "out int imagePoint; void main() {}"; }},
        {"OpenGL error", [](O o) { textureOf(o)->wrapS = 12345; }},
        {"OpenGL error", [](O o) { chunkOf<osg::BlendChunk>(o, 1)->srcFactor = 7; }},
        {"OpenGL error", [](O) { glBindFramebuffer(GL_FRAMEBUFFER, 0); }},
        {"shows nothing", [&](O) { viewport->pixelWidth = 0; }},
        {"corners", [](O o) { o->foreground->positions.resize(2); }},
        {"corners", [](O o) { o->foreground->texCoords.resize(3); }},
        {"no OpenGL context", [this](O) { context.leave(); }},
    };
    osg::ImagePtr const frame = makeImage(8, 8);
    for (auto const& [reason, spoil] : spoilers)
    {
        viewport = makeViewport(8, 8);
        osg::OverlayPtr const overlay = makeSquare(8), good = makeSquare(4);
        drawOver(frame, {overlay, good});
        osg::UInt64 const draws = action.getNumDraws();
        startFrom(frame);
        spoil(overlay);
        overlay->foreground->draw(&action, viewport.get());
        context.makeCurrent();
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR)) << reason;
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        good->foreground->draw(&action, makeViewport(8, 8).get());
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

} // namespace
