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

/// An OpenGL context without a surface, current while it lives. A test environment can demand that there is
/// one.
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

    ~SurfacelessContext()
    {
        eglMakeCurrent(_display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT);
        if (_context != EGL_NO_CONTEXT)
            eglDestroyContext(_display, _context);
    }

    bool isThere() const { return _context != EGL_NO_CONTEXT; }
    void makeCurrent() const { eglMakeCurrent(_display, EGL_NO_SURFACE, EGL_NO_SURFACE, _context); }
    void leave() const { eglMakeCurrent(_display, EGL_NO_SURFACE, EGL_NO_SURFACE, EGL_NO_CONTEXT); }

  private:
    EGLDisplay _display;
    EGLContext _context = EGL_NO_CONTEXT;
};

/// The parameter: whether the profile is ES.
class OpenGLTest : public SceneTest, public testing::WithParamInterface<bool>
{
  protected:
    void SetUp() override
    {
        if (context.isThere())
            return;
        if (std::getenv("ZT_REQUIRE_OPENGL"))
            FAIL() << "no EGL context can be had";
        GTEST_SKIP() << "no EGL context can be had";
    }

    void TearDown() override
    {
        if (context.isThere())
        {
            context.makeCurrent();
            EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR));
            action.release();
            glDeleteFramebuffers(1, &framebuffer);
            glDeleteTextures(1, &target);
        }
        SceneTest::TearDown();
    }

    /// Binds a framebuffer of a size that holds the pixels of a frame.
    void startFrom(osg::ImagePtr const& frame)
    {
        glDeleteFramebuffers(1, &framebuffer);
        glDeleteTextures(1, &target);
        glGenTextures(1, &target);
        glBindTexture(GL_TEXTURE_2D, target);
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, frame->width, frame->height, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                     frame->pixelBuffer());
        glBindTexture(GL_TEXTURE_2D, 0);
        glGenFramebuffers(1, &framebuffer);
        glBindFramebuffer(GL_FRAMEBUFFER, framebuffer);
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, target, 0);
    }

    osg::ImagePtr readBack(int width, int height)
    {
        osg::ImagePtr const image = makeImage(width, height);
        glReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, image->pixelBuffer());
        return image;
    }

    /// Overlays drawn over a frame, laid out for its size.
    osg::ImagePtr drawOver(osg::ImagePtr const& frame, std::vector<osg::OverlayPtr> const& overlays)
    {
        startFrom(frame);
        osg::ViewportPtr const viewport = makeViewport(frame->width, frame->height);
        for (osg::OverlayPtr const& overlay : overlays)
        {
            ztOverlays::updateOverlay(overlay, frame->width, frame->height);
            viewport->foregrounds.push_back(overlay->foreground);
        }
        viewport->render(&action);
        EXPECT_EQ(action.getFailure(), "");
        return readBack(frame->width, frame->height);
    }

    osg::ImagePtr stampOver(osg::ImagePtr const& frame, std::vector<osg::OverlayPtr> const& overlays)
    {
        osg::ImagePtr const stamped = makeImage(frame->width, frame->height);
        stamped->pixels = frame->pixels;
        ztOverlays::blendOverlaysOntoImage(overlays, stamped, osg::NullFC);
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

    osg::OverlayPtr makeLabel()
    {
        osg::OverlayPtr const label = makeText("Take 3\n\u05e9\u05dc\u05d5\u05dd 12");
        label->size = 17;
        label->textColor = {1.0f, 0.7f, 0.2f, 0.9f};
        label->backgroundColor = {0.1f, 0.3f, 0.5f};
        label->anchor = {0.31f, 0.77f};
        return label;
    }

    SurfacelessContext context{GetParam()};
    osg::OpenGLDrawAction action;
    GLuint framebuffer = 0;
    GLuint target = 0;
    GLuint textureName = 0;
};

INSTANTIATE_TEST_SUITE_P(Profiles, OpenGLTest, testing::Values(false, true),
                         [](auto const& profile) { return profile.param ? "ES" : "Core"; });

int difference(osg::ImagePtr const& a, osg::ImagePtr const& b)
{
    int largest = a->pixels.size() == b->pixels.size() ? 0 : 256;
    for (std::size_t i = 0; i < std::min(a->pixels.size(), b->pixels.size()); ++i)
        largest = std::max(largest, std::abs(a->pixels[i] - b->pixels[i]));
    return largest;
}

/// Peak signal-to-noise ratio in decibels.
double psnr(osg::ImagePtr const& a, osg::ImagePtr const& b)
{
    double squares = 0;
    for (std::size_t i = 0; i < a->pixels.size(); ++i)
        squares += std::pow(a->pixels[i] - b->pixels[i], 2);
    return 10 * std::log10(255.0 * 255.0 * double(a->pixels.size()) / squares);
}

TEST_P(OpenGLTest, TextAgreesWithTheStamp)
{
    for (float transparency : {0.0f, 0.4f, 1.0f})
        for (int alpha : {255, 100, 0})
        {
            osg::OverlayPtr const label = makeLabel();
            label->backgroundTransparency = {transparency, transparency, transparency};
            osg::ImagePtr const frame = makeFrame(321, 123, alpha);
            osg::ImagePtr const stamped = stampOver(frame, {label});
            EXPECT_LE(difference(drawOver(frame, {label}), stamped), 1) << transparency << ' ' << alpha;
            EXPECT_GT(difference(frame, stamped), 50);
        }
}

TEST_P(OpenGLTest, UnscaledPicturesAgreeWithTheStamp)
{
    std::mt19937 random(1);
    for (int alpha : {255, 128, 10})
    {
        osg::ImagePtr const picture = makeImage(60, 40);
        for (std::size_t i = 0; i < picture->pixels.size(); ++i)
            picture->pixels[i] = osg::UInt8(i % 4 == 3 ? unsigned(alpha) : random() % (unsigned(alpha) + 1));
        osg::OverlayPtr const overlay = makePicture(picture);
        overlay->size = 40;
        osg::ImagePtr const frame = makeFrame(200, 150, 255);
        for (osg::Vec2f const& offset : {osg::Vec2f{0, 0}, {20.7f, 30.4f}, {160.5f, 130.9f}})
        {
            overlay->offset = offset;
            osg::ImagePtr const stamped = stampOver(frame, {overlay});
            EXPECT_LE(difference(drawOver(frame, {overlay}), stamped), 1) << alpha << ' ' << offset.x;
        }
    }
}

TEST_P(OpenGLTest, ScaledPicturesResembleTheStamp)
{
    osg::ImagePtr const picture = makeImage(120, 80);
    for (int y = 0; y < 80; ++y)
        for (int x = 0; x < 120; ++x)
        {
            double const wave = 0.5 + 0.5 * std::sin(x * 0.15) * std::cos(y * 0.2);
            std::array<double, 4> const pixel{wave, 1 - wave, 0.5, 1};
            for (std::size_t c = 0; c < 4; ++c)
                picture->pixels[std::size_t(y * 120 + x) * 4 + c] = osg::UInt8(200 * pixel[c]);
        }
    osg::OverlayPtr const overlay = makePicture(picture);
    overlay->anchor = {0.5f, 0.5f};
    osg::ImagePtr const frame = makeFrame(300, 200, 255);
    for (float size : {160.0f, 100.0f, 60.0f, 40.0f})
    {
        overlay->size = size;
        osg::ImagePtr const stamped = stampOver(frame, {overlay});
        EXPECT_GE(psnr(drawOver(frame, {overlay}), stamped), 35.0) << size;
    }
}

TEST_P(OpenGLTest, AssembledTilesEqualTheWhole)
{
    constexpr int width = 240, height = 160, columns = 3, rows = 2;
    osg::OverlayPtr const label = makeLabel(), picture = makePicture(makeImage(7, 5, {0, 90, 30, 120}));
    picture->size = 31;
    picture->offset = {70.3f, 60.6f};
    osg::ImagePtr const frame = makeImage(width, height);
    osg::ImagePtr const whole = drawOver(frame, {label, picture});

    osg::ViewportPtr const viewport = makeViewport(width / columns, height / rows);
    auto const tile = osg::create<osg::TileCameraDecorator>();
    osg::setRefdCP(viewport->camera, tile);
    tile->fullWidth = width;
    tile->fullHeight = height;
    viewport->foregrounds = {label->foreground, picture->foreground};
    startFrom(frame);
    for (int row = 0; row < rows; ++row)
        for (int column = 0; column < columns; ++column)
        {
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
    osg::ViewportPtr const viewport = makeViewport(100, 80);
    auto const stereo = osg::create<osg::ShearedStereoCameraDecorator>();
    auto const perspective = osg::create<osg::PerspectiveCamera>();
    osg::setRefdCP(viewport->camera, stereo);
    osg::setRefdCP(stereo->decoratee, perspective);
    perspective->aspect = 2;
    osg::OverlayPtr const overlay = makePicture(makeImage(2, 1, {255, 255, 255, 255}));
    overlay->size = 20; // 40 by 20 of a layout of 200 by 80
    overlay->anchor = {1, 0};
    int layoutWidth, layoutHeight;
    ztOverlays::getViewportSize(viewport, layoutWidth, layoutHeight);
    ztOverlays::updateOverlay(overlay, layoutWidth, layoutHeight);
    viewport->foregrounds = {overlay->foreground};
    startFrom(makeImage(100, 80));
    viewport->render(&action);
    osg::ImagePtr const seen = readBack(100, 80);
    for (int y = 0; y < 80; ++y)
        for (int x = 0; x < 100; ++x)
            ASSERT_EQ(pixelAt(seen, x, y)[0], x >= 80 && y < 20 ? 255 : 0) << x << ' ' << y;
}

TEST_P(OpenGLTest, UploadsFollowTheImage)
{
    osg::NodePtr const root = makeScene();
    osg::OverlayPtr const text = overlayOf(ztOverlays::createOverlay(root));
    osg::OverlayPtr const picture = overlayOf(ztOverlays::createOverlay(root));
    text->text = "0";
    picture->contentType = osg::Overlay::ContentImage;
    osg::ImagePtr const image = makeImage(9, 9, {9, 9, 9, 9});
    osg::setRefdCP(picture->image, image);
    osg::ViewportPtr const viewport = makeViewport(64, 64);
    startFrom(makeImage(64, 64));
    auto const uploads = [&](int frames, auto const& change) {
        osg::UInt64 const before = action.getNumUploads();
        for (int frame = 0; frame < frames; ++frame)
        {
            change(frame);
            ztOverlays::updateAllOverlays(viewport);
            ztOverlays::drawOverlays(&action, viewport.get());
        }
        return action.getNumUploads() - before;
    };
    EXPECT_EQ(uploads(1, [](int) {}), 2u);
    EXPECT_EQ(uploads(1000, [](int) {}), 0u);
    EXPECT_EQ(action.getNumDraws(), 2002u);
    EXPECT_EQ(uploads(100,
                      [&](int frame) {
                          text->text = std::to_string(frame);
                          osg::markChanged(text, osg::Overlay::TextFieldMask);
                      }),
              100u);
    EXPECT_EQ(uploads(10, [&](int frame) { text->offset.x = float(frame); }), 0u) << "placed";
    EXPECT_EQ(uploads(1, [&](int) { osg::markChanged(image, osg::Image::PixelsFieldMask); }), 1u);
    EXPECT_EQ(uploads(1, [&](int) { textureOf(picture)->minFilter = GL_NEAREST; }), 0u) << "a filter";
}

TEST_P(OpenGLTest, ObjectsGoWithTheirChunksAndWithRelease)
{
    osg::ImagePtr const frame = makeImage(32, 32);
    {
        osg::OverlayPtr const staying = makePicture(makeImage(3, 3, {255, 0, 0, 255}));
        osg::NodePtr const going = ztOverlays::createOverlay(osg::NullFC);
        osg::addRef(going);
        overlayOf(going)->text = "going";
        drawOver(frame, {staying, overlayOf(going)});
        EXPECT_EQ(action.getNumTextures(), 2u);
        EXPECT_EQ(action.getNumPrograms(), 1u) << "one for all chunks of the same sources";
        osg::subRef(going);
        drawOver(frame, {staying});
        EXPECT_EQ(action.getNumTextures(), 1u);
        EXPECT_EQ(action.getNumPrograms(), 1u);
        for (GLuint name = 1; name < 50; ++name)
            if (name != target && glIsTexture(name))
            {
                EXPECT_EQ(textureName, 0u) << "more than one texture is left";
                textureName = name;
            }
    }
    EXPECT_NE(textureName, 0u);
    action.release();
    EXPECT_FALSE(glIsTexture(textureName));
    EXPECT_EQ(action.getNumTextures(), 0u);
    osg::OverlayPtr const again = makePicture(makeImage(3, 3, {255, 0, 0, 255}));
    EXPECT_EQ(pixelAt(drawOver(frame, {again}), 0, 0)[0], 255);
}

/// Everything that drawing could touch, as the context tells it.
std::vector<GLint> readState(bool isES)
{
    std::vector<GLint> state;
    for (GLenum const parameter :
         {GL_CURRENT_PROGRAM, GL_VERTEX_ARRAY_BINDING, GL_ARRAY_BUFFER_BINDING, GL_PIXEL_UNPACK_BUFFER_BINDING,
          GL_ACTIVE_TEXTURE, GL_BLEND_SRC_RGB, GL_BLEND_DST_RGB, GL_BLEND_SRC_ALPHA, GL_BLEND_DST_ALPHA,
          GL_BLEND_EQUATION_RGB, GL_BLEND_EQUATION_ALPHA, GL_UNPACK_ALIGNMENT, GL_UNPACK_ROW_LENGTH,
          GL_UNPACK_SKIP_ROWS, GL_UNPACK_SKIP_PIXELS, GL_DEPTH_FUNC, GL_CULL_FACE_MODE, GL_FRAMEBUFFER_BINDING,
          GL_DEPTH_WRITEMASK})
    {
        GLint value = -1;
        glGetIntegerv(parameter, &value);
        state.push_back(value);
    }
    for (GLenum const parameter : {GL_VIEWPORT, GL_SCISSOR_BOX, GL_COLOR_WRITEMASK, GL_POLYGON_MODE})
    {
        GLint values[4] = {};
        if (parameter != GL_POLYGON_MODE || !isES)
            glGetIntegerv(parameter, values);
        state.insert(state.end(), values, values + 4);
    }
    for (GLenum const capability :
         {GL_BLEND, GL_CULL_FACE, GL_DEPTH_TEST, GL_SCISSOR_TEST, GL_STENCIL_TEST, GL_SAMPLE_ALPHA_TO_COVERAGE})
        state.push_back(glIsEnabled(capability));
    GLint active;
    glGetIntegerv(GL_ACTIVE_TEXTURE, &active);
    for (GLenum unit : {GL_TEXTURE0, GL_TEXTURE3})
    {
        glActiveTexture(unit);
        for (GLenum const parameter : {GL_TEXTURE_BINDING_2D, GL_SAMPLER_BINDING})
        {
            state.push_back(-1);
            glGetIntegerv(parameter, &state.back());
        }
    }
    glActiveTexture(GLenum(active));
    return state;
}

TEST_P(OpenGLTest, StateIsAfterwardsAsBefore)
{
    osg::ImagePtr const frame = makeFrame(64, 48, 255);
    osg::OverlayPtr const label = makeLabel();
    osg::ImagePtr const expected = drawOver(frame, {label});
    startFrom(frame);

    GLuint texture, sampler, vertexArray, buffers[2];
    glGenTextures(1, &texture);
    glGenSamplers(1, &sampler);
    glGenVertexArrays(1, &vertexArray);
    glGenBuffers(2, buffers);
    for (GLenum unit : {GL_TEXTURE0, GL_TEXTURE3})
    {
        glActiveTexture(unit);
        glBindTexture(GL_TEXTURE_2D, texture);
    }
    glBindSampler(0, sampler);
    glBindVertexArray(vertexArray);
    glBindBuffer(GL_ARRAY_BUFFER, buffers[0]);
    glBindBuffer(GL_PIXEL_UNPACK_BUFFER, buffers[1]);
    for (GLenum capability :
         {GL_CULL_FACE, GL_DEPTH_TEST, GL_SCISSOR_TEST, GL_STENCIL_TEST, GL_SAMPLE_ALPHA_TO_COVERAGE})
        glEnable(capability);
    glCullFace(GL_FRONT_AND_BACK);
    glDepthFunc(GL_NEVER);
    glScissor(1, 2, 3, 4);
    glViewport(5, 6, 7, 8);
    glBlendFuncSeparate(GL_DST_COLOR, GL_ZERO, GL_ZERO, GL_ONE);
    glBlendEquationSeparate(GL_FUNC_SUBTRACT, GL_FUNC_REVERSE_SUBTRACT);
    glPixelStorei(GL_UNPACK_ALIGNMENT, 8);
    glPixelStorei(GL_UNPACK_ROW_LENGTH, 1000);
    glPixelStorei(GL_UNPACK_SKIP_ROWS, 3);
    glPixelStorei(GL_UNPACK_SKIP_PIXELS, 5);
    if (!GetParam())
        glPolygonMode(GL_FRONT_AND_BACK, GL_POINT);

    std::vector<GLint> const before = readState(GetParam());
    osg::ViewportPtr const viewport = makeViewport(64, 48);
    osg::markChanged(shownImage(label), osg::AllFieldsMask); // so that it uploads, too
    label->foreground->draw(&action, viewport.get());
    EXPECT_EQ(readState(GetParam()), before);
    EXPECT_EQ(action.getFailure(), "");
    EXPECT_EQ(difference(readBack(64, 48), expected), 0) << "and none of it has an effect";

    glBindVertexArray(0);
    glDeleteBuffers(2, buffers);
    glDeleteVertexArrays(1, &vertexArray);
    glDeleteSamplers(1, &sampler);
    glDeleteTextures(1, &texture);
    for (GLenum parameter : {GL_UNPACK_ROW_LENGTH, GL_UNPACK_SKIP_ROWS, GL_UNPACK_SKIP_PIXELS})
        glPixelStorei(parameter, 0);
    glDisable(GL_SCISSOR_TEST);
}

TEST_P(OpenGLTest, ChunksMeanWhatTheySay)
{
    // A picture of a black and a white pixel, four times as large.
    osg::ImagePtr const image = makeImage(2, 1, {0, 0, 0, 255});
    for (std::size_t i = 4; i < 7; ++i)
        image->pixels[i] = 255;
    osg::OverlayPtr const overlay = makePicture(image);
    overlay->size = 4;
    auto const material = osg::dynamicCast<osg::ChunkMaterial>(overlay->foreground->material);
    auto const blend = osg::dynamicCast<osg::BlendChunk>(material->chunks[1]);
    osg::ImagePtr const frame = makeImage(8, 4, {100, 100, 100, 255});
    ztOverlays::updateOverlay(overlay, 8, 4);
    osg::TextureChunkPtr const texture = textureOf(overlay);
    auto const column = [&](int x) { return pixelAt(drawOver(frame, {overlay}), x, 1)[0]; };

    EXPECT_NEAR(column(3), 255 * 3 / 8, 2) << "linear";
    texture->magFilter = GL_NEAREST;
    EXPECT_EQ(column(3), 0);
    EXPECT_EQ(column(4), 255);
    texture->magFilter = GL_LINEAR;
    EXPECT_EQ(column(0), 0) << "clamped";
    texture->wrapS = GL_REPEAT;
    EXPECT_NEAR(column(0), 255 * 3 / 8, 2) << "the other end comes round";
    texture->wrapS = GL_CLAMP_TO_EDGE;
    blend->srcFactor = GL_ONE;
    blend->destFactor = GL_ONE;
    EXPECT_EQ(column(0), 100) << "added";

    // Eight texels a pixel in stripes: a mipmap evens them out, the nearest texel doesn't.
    osg::ImagePtr const stripes = makeImage(64, 32, {0, 0, 0, 255});
    for (std::size_t i = 0; i < stripes->pixels.size(); ++i)
        stripes->pixels[i] = osg::UInt8(i % 4 == 3 || i / 4 % 2 ? 255 : 0);
    osg::OverlayPtr const striped = makePicture(stripes);
    striped->size = 4;
    ztOverlays::updateOverlay(striped, 8, 4);
    EXPECT_NEAR(pixelAt(drawOver(frame, {striped}), 3, 1)[0], 128, 3);
    textureOf(striped)->minFilter = GL_NEAREST;
    EXPECT_EQ(pixelAt(drawOver(frame, {striped}), 3, 1)[0] % 255, 0);
}

TEST_P(OpenGLTest, ShaderFlags)
{
    // Alpha 128 and colour 64, over black.
    struct Row
    {
        char const* name;
        bool straightAlpha, opaque;
        int expected;
    };
    for (Row const& row : {Row{"premultiplied", false, false, 64},
                           {"straight", true, false, 32},
                           {"premultiplied, opaque", false, true, 128},
                           {"straight, opaque", true, true, 64}})
    {
        osg::OverlayPtr const overlay = makePicture(makeImage(4, 4, {64, 64, 64, 128}));
        overlay->size = 4;
        auto const material = osg::dynamicCast<osg::ChunkMaterial>(overlay->foreground->material);
        osg::subRef(material->chunks[2]);
        material->chunks.pop_back();
        material->addChunk(ztOpenSGExt::createBackplateShader(row.straightAlpha, row.opaque), -2);
        EXPECT_NEAR(pixelAt(drawOver(makeImage(8, 8), {overlay}), 1, 1)[0], row.expected, 1) << row.name;
    }
}

TEST_P(OpenGLTest, WhatCannotBeDrawnLeavesNoTrace)
{
    GLint maxSize;
    glGetIntegerv(GL_MAX_TEXTURE_SIZE, &maxSize);
    struct Row
    {
        char const* reason;
        std::function<void(osg::OverlayPtr const&)> spoil;
    };
    auto const chunk = [](osg::OverlayPtr const& overlay, std::size_t i) {
        return osg::dynamicCast<osg::ChunkMaterial>(overlay->foreground->material)->chunks[i];
    };
    for (Row const& row : {
             Row{"no texture, blend or shader chunk",
                 [](osg::OverlayPtr const& o) { osg::setRefdCP(o->foreground->material, osg::NullFC); }},
             {"no texture, blend or shader chunk",
              [](osg::OverlayPtr const& o) {
                  osg::setRefdCP(o->foreground->material, osg::create<osg::ChunkMaterial>());
              }},
             {"no image", [](osg::OverlayPtr const& o) { textureOf(o)->setImage(osg::NullFC); }},
             {"no image", [this](osg::OverlayPtr const& o) { textureOf(o)->setImage(makeImage(0, 0)); }},
             {"limit",
              [this, maxSize](osg::OverlayPtr const& o) { textureOf(o)->setImage(makeImage(maxSize + 1, 1)); }},
             {"compile",
              [&chunk](osg::OverlayPtr const& o) {
                  osg::dynamicCast<osg::ShaderChunk>(chunk(o, 2))->fragmentProgram = "void main() { broken }";
              }},
             {"OpenGL error", [](osg::OverlayPtr const& o) { textureOf(o)->wrapS = 12345; }},
             {"OpenGL error",
              [&chunk](osg::OverlayPtr const& o) { osg::dynamicCast<osg::BlendChunk>(chunk(o, 1))->srcFactor = 7; }},
             {"corners", [](osg::OverlayPtr const& o) { o->foreground->positions.resize(2); }},
             {"corners", [](osg::OverlayPtr const& o) { o->foreground->texCoords.resize(3); }},
             {"no OpenGL context", [this](osg::OverlayPtr const&) { context.leave(); }},
         })
    {
        osg::OverlayPtr const good = makePicture(makeImage(8, 8, {255, 255, 255, 255}));
        good->size = 8;
        osg::ImagePtr const frame = makeImage(8, 8);
        EXPECT_EQ(pixelAt(drawOver(frame, {good}), 4, 4)[0], 255);
        startFrom(frame);
        osg::ViewportPtr const viewport = makeViewport(8, 8);
        row.spoil(good);
        good->foreground->draw(&action, viewport.get());
        EXPECT_NE(action.getFailure().find(row.reason), std::string::npos) << action.getFailure();
        context.makeCurrent();
        EXPECT_EQ(glGetError(), GLenum(GL_NO_ERROR)) << row.reason;
        EXPECT_EQ(pixelAt(readBack(8, 8), 4, 4)[0], 0) << row.reason;
    }
    osg::OverlayPtr const overlay = makePicture(makeImage(8, 8, {255, 255, 255, 255}));
    SurfacelessContext const other(GetParam());
    overlay->foreground->draw(&action, makeViewport(8, 8).get());
    EXPECT_NE(action.getFailure().find("isn't the action's"), std::string::npos);
}

} // namespace
