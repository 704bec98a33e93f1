// OBJ, STL and PLY files of any bytes: a mesh that fits the view, or one line that says what is wrong.
#include "FuzzSupport.h"
#include "MeshFile.h"
#include "OSGBase.h"
#include "ObjFile.h"

#include <cmath>
#include <sstream>
#include <stdexcept>

using namespace ztFuzz;

namespace
{

template <class Read>
void check(Read const& read)
{
    try
    {
        ztExamples::Mesh const mesh = read();
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
        require(what.find("expected ") != std::string::npos && what.find('\n') == std::string::npos, "one line");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(osg::UInt8 const* data, std::size_t size)
{
    QByteArray const bytes(reinterpret_cast<char const*>(data), int(size));
    check([&] {
        std::istringstream stream(bytes.toStdString());
        return ztExamples::readObj(stream, "");
    });
    check([&] { return ztExamples::readStl(bytes); });
    check([&] { return ztExamples::readPly(bytes); });
    return 0;
}
