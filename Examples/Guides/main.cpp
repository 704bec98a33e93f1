/// \file
/// ztGuides [FOLDER]: runs the code of the guides, checks what they say, and saves their pictures in the folder.

#include "Guides.h"

#include "ztOpenSGUtils.h"

#include <QGuiApplication>

#include <iostream>
#include <stdexcept>

namespace ztGuides
{

void expect(bool holds, char const* claim)
{
    if (!holds)
        throw std::logic_error(claim);
}

namespace
{

void runAll(QString const& folder)
{
    hosting();
    placement(folder);
    stamping();
    drawing();
    ztOpenSGUtils::setRoot(osg::NullFC);
    expect(osg::FieldContainerFactory::getNumContainers() == 0, "nothing is left over");
}

} // namespace

} // namespace ztGuides

int main(int argc, char** argv)
try
{
    //! [application]
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen"); // needs no display
    QGuiApplication const application(argc, argv);
    //! [application]
    ztGuides::runAll(QGuiApplication::arguments().value(1));
}
catch (std::exception const& error)
{
    std::cerr << "doesn't hold: " << error.what() << '\n';
    return 1;
}
