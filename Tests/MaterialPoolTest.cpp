// Where the search for the material pool ends, whatever has happened to the scene.
#include "TestSupport.h"

#include "ztMaterials.h"

namespace
{

class HostPool : public osg::MaterialPool
{
    ZT_CONTAINER(HostPool)
};

ZT_CONTAINER_TYPE(HostPool, osg::MaterialPool);

bool isPoolNode(osg::NodePtr const& node)
{
    return osg::dynamicCast<osg::MaterialPool>(node->core) != osg::NullFC;
}

/// The first at or below a node, in the order of a walk.
osg::NodePtr firstPoolNode(osg::NodePtr const& node)
{
    osg::NodePtr found;
    osg::traverse(node, [&found](osg::NodePtr const& visited) {
        found = isPoolNode(visited) ? visited : osg::NodePtr();
        return found != osg::NullFC ? osg::Action::Quit : osg::Action::Continue;
    });
    return found;
}

osg::NodePtr topOf(osg::NodePtr node)
{
    while (node->parent != osg::NullFC)
        node = node->parent;
    return node;
}

} // namespace

class MaterialPoolTest : public SceneTest
{
  public:
    static void expectWhatAWalkFinds(osg::NodePtr const& start, std::string const& what)
    {
        using ztMaterials::findMaterialPool;
        EXPECT_EQ(findMaterialPool(start, true, true), firstPoolNode(topOf(start))) << what;
        EXPECT_EQ(findMaterialPool(start, false, true), firstPoolNode(start)) << what;
        EXPECT_EQ(findMaterialPool(start, false, false), isPoolNode(start) ? start : osg::NodePtr()) << what;
        EXPECT_EQ(findMaterialPool(start, true, false), isPoolNode(topOf(start)) ? topOf(start) : osg::NodePtr())
            << what;
    }
};

TEST_F(MaterialPoolTest, IsFoundBesideCopiesAndAfterWhatHeldItIsGone)
{
    EXPECT_EQ(ztMaterials::findMaterialPool(osg::NullFC, true, true), osg::NullFC);
    auto const pool = hold(osg::create<osg::MaterialPool>());
    osg::NodePtr const scene = osg::create<osg::Node>(), poolNode = makeNode(pool, scene), other = makeNode();

    osg::NodePtr const copy = hold(osg::dynamicCast<osg::Node>(scene->shallowCopy()));
    osg::addRef(poolNode); // by the copy
    expectWhatAWalkFinds(copy, "a copy, whose children say that another one is their parent");
    other->addChild(copy);
    expectWhatAWalkFinds(other, "a copy below another node");
    osg::subRef(scene); // which nothing holds
    EXPECT_EQ(poolNode->parent, osg::NullFC);
    expectWhatAWalkFinds(poolNode, "the scene is gone");
    expectWhatAWalkFinds(other, "the copy still has it");

    osg::NodePtr const twin = hold(osg::dynamicCast<osg::Node>(poolNode->shallowCopy()));
    osg::addRef(pool); // by the twin
    expectWhatAWalkFinds(twin, "a copy that has the pool");
    twin->setCore(osg::NullFC);
    makeNode(hold(osg::create<HostPool>()), twin);
    makeNode(pool, twin);
    expectWhatAWalkFinds(twin, "which gave it up, and has two below");
    copy->subChild(poolNode);
    expectWhatAWalkFinds(other, "the copy has it no more");
}
