// Recognises a circle through the exported entry and binds the plain-named exports at run time.
#include <cmath>
#include <cstdio>
#include <dlfcn.h>

#include "tessera/Tessera.h"

namespace {

int failures = 0;

void Expect(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "failed: %s\n", what);
        ++failures;
    }
}

} // namespace

int main(int argc, char** argv) {
    std::vector<InputPoint> points;
    for (int i = 0; i <= 100; ++i) {
        const double angle = 6.283185307179586 * i / 100;
        points.push_back({300 + 80 * std::cos(angle), 200 + 80 * std::sin(angle)});
    }
    std::vector<HostGeometryHandle> handles;
    ConvertPolyLinePointsTorecognizedAnalyticTypes(points, handles);
    Expect(handles.size() == 1 && handles[0].typeCode == kHostCircleOrEllipse, "a circle is recognised");
    for (HostGeometryHandle& handle : handles) {
        TesseraHost_ReleaseHandle(&handle);
    }
    Expect(TesseraHost_AskRegistrationCount() == 1, "the library registered itself at load");
    Expect(Tessera::Core::IsPartEmpty() == false, "recognition takes identifiers");

    void* library = dlopen(argc > 1 ? argv[1] : "libtessera.so", RTLD_NOW);
    Expect(library != nullptr, "the shared library can be opened");
    for (const char* name :
         {"ConvertPolyLinePointsTorecognizedAnalyticTypes", "GetColorFromIntColor", "StrokeIsScribbleShape",
          "StrokeRecognizeScribble", "TesseraHost_InstallServices", "TesseraHost_ReleaseHandle"}) {
        Expect(library != nullptr && dlsym(library, name) != nullptr, name);
    }
    return failures;
}
