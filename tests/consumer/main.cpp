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

using InkEntry = decltype(&ConvertInkingStrokeToGeometry);

/// A pen stroke through the entry that a host would bind by its name.
void DrawIntoADocument(InkEntry convert) {
    HostDocument* document = TesseraHost_CreateDocument();
    std::vector<tagGPosition2d> pen;
    for (int i = 0; i <= 100; ++i) {
        pen.push_back({2.0 * i, 0.02 * i});
    }
    const HostInkStroke ink{sizeof(ink), 101, 0, pen.data(), nullptr};
    HostInkOptions options{};
    options.size = sizeof(options);
    HostInkResult result{};
    result.size = sizeof(result);
    Expect(convert != nullptr && convert(&ink, document, &options, &result) == 0, "ink is taken");
    Expect(result.elementCount == 1 && result.constraintCount == 1, "a horizontal line is drawn");
    TesseraHost_ReleaseInkResult(&result);
    TesseraHost_DeleteDocument(document);
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
         {"ConvertPolyLinePointsTorecognizedAnalyticTypes", "ConvertInkingStrokeToGeometry",
          "GetColorFromIntColor", "StrokeIsScribbleShape", "StrokeRecognizeScribble",
          "TesseraHost_InstallServices", "TesseraHost_ReleaseHandle", "TesseraHost_CreateDocument"}) {
        Expect(library != nullptr && dlsym(library, name) != nullptr, name);
    }
    if (library != nullptr) {
        DrawIntoADocument(reinterpret_cast<InkEntry>(dlsym(library, "ConvertInkingStrokeToGeometry")));
    }
    return failures;
}
