/// A library whose classes are called like the scene graph's and are laid out otherwise.
#include <cstdlib>
#include <string>

namespace osg
{

struct FieldContainer
{
    virtual ~FieldContainer() { text.clear(); }
    virtual std::string name() const { return text; }
    std::string text = "decoy";
};

struct Image : FieldContainer
{
    std::string name() const override;
    double values[64] = {};
};
std::string Image::name() const
{
    return text + " image";
}

struct Node : FieldContainer
{
    Node();
    ~Node() override;
    Image image;
};
Node::Node() = default;
Node::~Node() = default;

} // namespace osg

/// Uses them while the process starts, and leaves one until it ends.
static osg::Node const node;
static bool const works = node.image.name() == "decoy image" ? true : (std::abort(), false);
