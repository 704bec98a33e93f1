// Drawing of overlays with OpenGL into an image, without a window. Every measurement waits until all is drawn.
#include "Benchmark.h"
#include "OSGMaterialPool.h"
#include "OSGOpenGLDrawAction.h"
#include "SurfacelessContext.h"
#include "ztImage.h"
#include "ztOpenSGUtils.h"
#include "ztOverlayUtils.h"

#ifdef ZT_HAS_IMGUI
#include <backends/imgui_impl_opengl3.h>
#include <imgui.h>
#endif

#include <array>
#include <memory>
#include <utility>

namespace ztBenchmarks
{

namespace
{

constexpr int width = 1920, height = 1080;

osg::ImagePtr createImage(int columns, int rows, unsigned seed)
{
    auto const image = ztImage::create(columns, rows);
    for (osg::UInt8& byte : image->pixels)
        byte = osg::UInt8((seed = seed * 1664525u + 1013904223u) >> 25); // at most 127, and alpha is 255:
    for (std::size_t i = 3; i < image->pixels.size(); i += 4)
        image->pixels[i] = 255;
    return image;
}

/// The current scene, the current context and a framebuffer in it.
class Stage
{
  public:
    Stage()
    {
        osg::NodePtr const root = osg::create<osg::Node>();
        root->setCore(osg::create<osg::MaterialPool>());
        ztOpenSGUtils::setRoot(root);
        osg::addRef(viewport);
        viewport->pixelWidth = width;
        viewport->pixelHeight = height;
        glBindTexture(GL_TEXTURE_2D, make(glGenTextures));
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, width, height, 0, GL_RGBA, GL_UNSIGNED_BYTE, nullptr);
        GLint target = 0;
        glGetIntegerv(GL_TEXTURE_BINDING_2D, &target);
        glBindFramebuffer(GL_FRAMEBUFFER, make(glGenFramebuffers));
        glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, GLuint(target), 0);
        glViewport(0, 0, width, height);
    }

    ~Stage()
    {
        action.release();
        osg::subRef(viewport);
        ztOpenSGUtils::setRoot(osg::NullFC);
    }

    /// Shows a picture with its lower left corner at a point.
    osg::ImagePtr add(osg::ImagePtr const& image, int x, int y, float size)
    {
        auto const overlay =
            osg::dynamicCast<osg::Overlay>(ztOverlays::createOverlay(ztOverlays::getOverlayPoolRoot())->core);
        overlay->contentType = osg::Overlay::ContentImage;
        osg::setRefdCP(overlay->image, image);
        overlay->size = size;
        overlay->offset = {float(x), float(y)};
        osg::markChanged(overlay, osg::AllFieldsMask);
        return image;
    }

    void layOut()
    {
        ztOverlays::updateAllOverlays(viewport);
        ztOverlays::addOverlays(viewport);
    }

    void draw()
    {
        viewport->render(&action);
        glFinish();
    }

    SurfacelessContext context{false};
    osg::ViewportPtr viewport = osg::create<osg::Viewport>();
    osg::OpenGLDrawAction action;
};

/// The least that draws textured rectangles: one bound texture and one call for each.
class Rectangles
{
  public:
    Rectangles()
    {
        glBindVertexArray(_vertexArray);
        glBindBuffer(GL_ARRAY_BUFFER, make(glGenBuffers));
        glEnableVertexAttribArray(0);
        glEnableVertexAttribArray(1);
        glVertexAttribPointer(0, 2, GL_FLOAT, GL_FALSE, sizeof(Corner), nullptr);
        glVertexAttribPointer(1, 2, GL_FLOAT, GL_FALSE, sizeof(Corner), reinterpret_cast<void*>(2 * sizeof(float)));
        attach(GL_VERTEX_SHADER, "#version 330 core\nin vec2 position; in vec2 texCoord; out vec2 point;"
                                 "void main() { point = texCoord; gl_Position = vec4(position, 0.0, 1.0); }");
        attach(GL_FRAGMENT_SHADER, "#version 330 core\nin vec2 point; out vec4 color; uniform sampler2D image;"
                                   "void main() { color = texture(image, point); }");
        glBindAttribLocation(_program, 0, "position");
        glBindAttribLocation(_program, 1, "texCoord");
        glLinkProgram(_program);
    }

    void add(osg::Image& image, int x, int y, int columns, int rows)
    {
        textures.push_back(make(glGenTextures));
        glBindTexture(GL_TEXTURE_2D, textures.back());
        glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
        upload(image);
        places.push_back({x, y});
        for (auto const& [s, t] : {std::pair{0, 0}, {1, 0}, {1, 1}, {0, 1}})
            _corners.push_back({2.0f * float(x + s * columns) / width - 1.0f,
                                2.0f * float(y + t * rows) / height - 1.0f, float(s), float(t)});
        glBindVertexArray(_vertexArray);
        glBufferData(GL_ARRAY_BUFFER, GLsizeiptr(_corners.size() * sizeof(Corner)), _corners.data(), GL_STATIC_DRAW);
    }

    /// To the texture that is bound.
    static void upload(osg::Image& image)
    {
        glTexImage2D(GL_TEXTURE_2D, 0, GL_RGBA8, image.width, image.height, 0, GL_RGBA, GL_UNSIGNED_BYTE,
                     image.pixelBuffer());
        glGenerateMipmap(GL_TEXTURE_2D);
    }

    void draw()
    {
        glUseProgram(_program);
        glBindVertexArray(_vertexArray);
        glEnable(GL_BLEND);
        glBlendFunc(GL_ONE, GL_ONE_MINUS_SRC_ALPHA);
        for (std::size_t i = 0; i < textures.size(); ++i)
        {
            glBindTexture(GL_TEXTURE_2D, textures[i]);
            glDrawArrays(GL_TRIANGLE_FAN, GLint(4 * i), 4);
        }
        glDisable(GL_BLEND);
        glFinish();
    }

    std::vector<GLuint> textures;
    std::vector<std::array<int, 2>> places;

  private:
    using Corner = std::array<float, 4>;

    void attach(GLenum stage, char const* source)
    {
        GLuint const shader = glCreateShader(stage);
        glShaderSource(shader, 1, &source, nullptr);
        glCompileShader(shader);
        glAttachShader(_program, shader);
    }

    GLuint _program = glCreateProgram();
    GLuint _vertexArray = make(glGenVertexArrays);
    std::vector<Corner> _corners;
};

#ifdef ZT_HAS_IMGUI
/// Dear ImGui with its back end for OpenGL 3.
class ImmediateGui
{
  public:
    ImmediateGui() : _context(ImGui::CreateContext())
    {
        ImGui::GetIO().IniFilename = nullptr;
        ImGui::GetIO().DisplaySize = {float(width), float(height)};
        ImGui::GetIO().DeltaTime = 0.01f;
        isThere = ImGui_ImplOpenGL3_Init("#version 330 core");
    }

    ImmediateGui(ImmediateGui const&) = delete;
    ImmediateGui& operator=(ImmediateGui const&) = delete;

    ~ImmediateGui()
    {
        if (isThere)
            ImGui_ImplOpenGL3_Shutdown();
        ImGui::DestroyContext(_context);
    }

    void draw(Rectangles const& rectangles, int size)
    {
        ImGui_ImplOpenGL3_NewFrame();
        ImGui::NewFrame();
        ImDrawList& list = *ImGui::GetBackgroundDrawList();
        for (std::size_t i = 0; i < rectangles.textures.size(); ++i)
        {
            auto const [x, y] = rectangles.places[i];
            list.AddImage(reinterpret_cast<ImTextureID>(std::uintptr_t(rectangles.textures[i])),
                          {float(x), float(height - y - size)}, {float(x + size), float(height - y)}, {0, 1}, {1, 0});
        }
        ImGui::Render();
        ImGui_ImplOpenGL3_RenderDrawData(ImGui::GetDrawData());
        glFinish();
    }

    bool isThere = false;

  private:
    ImGuiContext* _context;
};
#endif

/// Each with a texture of its own, side by side.
struct ManyOverlays
{
    static constexpr int size = 16;

    explicit ManyOverlays(int overlays) : count(overlays)
    {
        for (int i = 0; i < count; ++i)
        {
            int const x = i * size % width, y = i * size / width * size % (height - size);
            rectangles.add(*stage.add(createImage(size, size, unsigned(i)), x, y, size), x, y, size, size);
        }
        stage.layOut();
    }

    Stage stage;
    Rectangles rectangles;
#ifdef ZT_HAS_IMGUI
    ImmediateGui gui;
#endif
    double count;
};

Contenders manyOverlays(int count)
{
    auto const many = std::make_shared<ManyOverlays>(count);
    Contender gui{"Dear ImGui", {}};
#ifdef ZT_HAS_IMGUI
    if (many->gui.isThere)
        gui.measure = [=] { return timed([&] { many->gui.draw(many->rectangles, many->size); }, many->count); };
#endif
    return {{"ours", [=] { return timed([&] { many->stage.draw(); }, many->count); }},
            {"a bind and a call each", [=] { return timed([&] { many->rectangles.draw(); }, many->count); }},
            gui};
}

/// A picture that is shown at another size than its own.
struct ScaledPicture
{
    ScaledPicture() { stage.layOut(); }

    Stage stage;
    osg::ImagePtr image = stage.add(createImage(800, 600, 1), 10, 10, 400);
    Rectangles rectangle = makeRectangle();

  private:
    Rectangles makeRectangle()
    {
        Rectangles made;
        made.add(*image, 10, 10, 533, 400);
        return made;
    }
};

Contenders scaledPicture(bool isChanging)
{
    auto const picture = std::make_shared<ScaledPicture>();
    auto const draw = [=] {
        if (isChanging)
            osg::markChanged(picture->image, osg::Image::PixelsFieldMask);
        picture->stage.draw();
    };
    auto const drawWithMipmaps = [=] {
        if (isChanging)
            Rectangles::upload(*picture->image);
        picture->rectangle.draw();
    };
    return {{"ours", [=] { return timed(draw); }}, {"mipmaps", [=] { return timed(drawWithMipmaps); }}};
}

} // namespace

Cases drawingCases()
{
    if (!SurfacelessContext(false).isThere())
        return {};
    Cases cases;
    for (int count : {1, 100, 1000, 10000})
        cases.push_back({"draw " + std::to_string(count) + " overlays, each", [=] { return manyOverlays(count); }});
    cases.push_back({"draw a scaled picture, quiet", [] { return scaledPicture(false); }});
    cases.push_back({"draw a scaled picture, changing", [] { return scaledPicture(true); }});
    return cases;
}

} // namespace ztBenchmarks
