// OBJ files of any bytes: a mesh that fits the view, or one line that names the place.
#include "FuzzSupport.h"
#include "OSGBase.h"
#include "ObjFile.h"

#include <cmath>
#include <sstream>
#include <stdexcept>

using namespace ztFuzz;

extern "C" int LLVMFuzzerTestOneInput(osg::UInt8 const* data, std::size_t size)
{
    std::istringstream stream(std::string(reinterpret_cast<char const*>(data), size));
    try
    {
        ztExamples::Mesh const mesh = ztExamples::readObj(stream);
        require(!mesh.empty() && mesh.size() % 3 == 0, "the mesh is triangles");
        for (ztExamples::Vertex const& vertex : mesh)
        {
            double const length = std::hypot(vertex.normal.x(), vertex.normal.y(), vertex.normal.z());
            require(vertex.position.length() <= 1.0001f, "positions are at most 1 from the origin");
            require(length == 0.0 || std::abs(length - 1.0) < 1e-5, "normals have length 1, or 0 where none follows");
        }
    }
    catch (std::runtime_error const& error)
    {
        std::string const what = error.what();
        require(what.rfind("line ", 0) == 0 && what.find('\n') == std::string::npos, "the message is a line's");
    }
    return 0;
}
