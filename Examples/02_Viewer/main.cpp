// A triangle with a label and a logo in front: 02_Viewer LOGO [FIRST.png SECOND.png]
// R removes the label. With the names of two pictures it saves one with the label and one without, and ends.
#include "OSGMaterialPool.h"
#include "OSGOpenGLDrawAction.h"
#include "OSGRefPtr.h"
#include "Triangle.h"
#include "ztImage.h"
#include "ztOpenSGUtils.h"
#include "ztOverlayUtils.h"

#include <QGuiApplication>
#include <QImage>

#include <GLFW/glfw3.h>

#include <iostream>

namespace
{

osg::NodePtr createLabel()
{
    osg::NodePtr const node = ztOverlays::createOverlay(ztOverlays::getOverlayPoolRoot());
    auto const label = osg::dynamicCast<osg::Overlay>(node->core);
    label->text = "Take 3";
    label->size = 24.0f; // points
    label->anchor = {0.5f, 0.05f};
    osg::markChanged(label, osg::AllFieldsMask);
    return node;
}

void createLogo(char const* path)
{
    QImage const pixels = QImage(path).convertToFormat(QImage::Format_RGBA8888_Premultiplied).mirrored();
    auto const logo = osg::dynamicCast<osg::Overlay>(ztOverlays::createOverlay(ztOverlays::getOverlayPoolRoot())->core);
    osg::setRefdCP(logo->image, ztImage::create(pixels.width(), pixels.height(), pixels.constBits())); // holds it
    logo->contentType = osg::Overlay::ContentImage;
    logo->size = 64.0f; // its height
    logo->anchor = {1.0f, 1.0f};
    osg::markChanged(logo, osg::AllFieldsMask);
}

// A viewport's list holds no references: what goes leaves the list first.
void remove(osg::NodePtr& label, osg::Viewport& viewport)
{
    osg::NodePtr const pool = label->parent;
    viewport.subForeground(osg::dynamicCast<osg::Overlay>(label->core)->foreground);
    pool->subChild(label); // its last reference: the label is gone
    label = osg::NullFC;
    osg::markChanged(pool, osg::Node::ChildrenFieldMask);
}

void save(osg::Viewport& viewport, char const* path)
{
    QImage picture(viewport.pixelWidth, viewport.pixelHeight, QImage::Format_RGBX8888);
    glReadPixels(0, 0, picture.width(), picture.height(), GL_RGBA, GL_UNSIGNED_BYTE, picture.bits());
    picture.mirrored().save(path);
}

GLFWwindow* openWindow()
{
    glfwInit();
    glfwWindowHint(GLFW_CONTEXT_VERSION_MAJOR, 3);
    glfwWindowHint(GLFW_CONTEXT_VERSION_MINOR, 3);
    glfwWindowHint(GLFW_OPENGL_PROFILE, GLFW_OPENGL_CORE_PROFILE);
    GLFWwindow* const window = glfwCreateWindow(640, 360, "Overlays", nullptr, nullptr);
    glfwMakeContextCurrent(window);
    return window;
}

void drawTriangle(GLFWwindow* window, osg::Viewport& viewport)
{
    glfwGetFramebufferSize(window, &viewport.pixelWidth, &viewport.pixelHeight);
    glViewport(0, 0, viewport.pixelWidth, viewport.pixelHeight);
    glClear(GL_COLOR_BUFFER_BIT);
    glDrawArrays(GL_TRIANGLES, 0, 3);
}

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen"); // Qt has the fonts; the window is another library's
    QGuiApplication const application(argc, argv);
    GLFWwindow* const window = openWindow();
    if (!window || argc < 2)
    {
        std::cerr << "02_Viewer needs the name of a picture and a display with OpenGL 3.3\n";
        return 2;
    }
    ztOpenSGUtils::setRoot(osg::create<osg::Node>()); // holds the scene
    ztOpenSGUtils::getRoot()->setCore(osg::create<osg::MaterialPool>());
    osg::NodePtr label = createLabel();
    createLogo(argv[1]);
    osg::RefPtr<osg::Viewport> viewport(osg::create<osg::Viewport>());
    ztOverlays::addOverlays(viewport);
    prepareTriangle();
    osg::OpenGLDrawAction action;
    for (int frame = 1; !glfwWindowShouldClose(window) && (argc < 4 || frame <= 2); ++frame)
    {
        drawTriangle(window, *viewport);
        ztOverlays::updateAllOverlays(viewport); // renders what is dirty, places the rest
        viewport->render(&action);               // leaves OpenGL's state as it was
        if (argc == 4)
            save(*viewport, argv[1 + frame]);
        glfwSwapBuffers(window);
        glfwPollEvents();
        if (label != osg::NullFC && (argc == 4 || glfwGetKey(window, GLFW_KEY_R) == GLFW_PRESS))
            remove(label, *viewport);
    }
    action.release(); // while its context is there
    ztOpenSGUtils::setRoot(osg::NullFC);
    glfwTerminate();
}
