// The compiled part of the package: thin, private, and as strict as the libraries. Its words are
// for whoever works on the package; the package itself checks first.

#include "Calls.h"
#include "Maps.h"
#include "Plain.h"
#include "Reading.h"

NB_MODULE(_core, module)
{
    module.attr("__version__") = VOLUX_RESAMPLE_VERSION;
    volux::python::addGeometry(module);
    volux::python::addReading(module);
    volux::python::addCalls(module);
    volux::python::addPlain(module);
}
