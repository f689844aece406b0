#include "vision/tesseract/TesseractLibrary.h"

#include <dlfcn.h>

namespace kestrelid::vision {

TesseractLibrary::Loaded TesseractLibrary::load() {
    const std::string name(kTesseractLibraryName);
    void* handle = dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
        const char* reason = dlerror();
        return RequestError{"Tesseract cannot be loaded (" +
                            std::string(reason ? reason : name.c_str()) +
                            "): " + std::string(kTesseractLibraryRemedy)};
    }
    const auto library = std::make_shared<TesseractLibrary>();
    std::string absent;
    const auto bind = [&]<class Function>(Function& function, const char* symbol) {
        function = reinterpret_cast<Function>(dlsym(handle, symbol));
        if (!function)
            absent = symbol;
    };
    bind(library->version, "TessVersion");
    bind(library->create, "TessBaseAPICreate");
    bind(library->destroy, "TessBaseAPIDelete");
    bind(library->setVariable, "TessBaseAPISetVariable");
    bind(library->initialize, "TessBaseAPIInit2");
    bind(library->dataPath, "TessBaseAPIGetDatapath");
    bind(library->setPageSegmentation, "TessBaseAPISetPageSegMode");
    bind(library->setImage, "TessBaseAPISetImage");
    bind(library->setResolution, "TessBaseAPISetSourceResolution");
    bind(library->recognize, "TessBaseAPIRecognize");
    bind(library->iterator, "TessBaseAPIGetIterator");
    bind(library->clear, "TessBaseAPIClear");
    bind(library->forget, "TessBaseAPIClearAdaptiveClassifier");
    bind(library->deleteIterator, "TessResultIteratorDelete");
    bind(library->next, "TessResultIteratorNext");
    bind(library->text, "TessResultIteratorGetUTF8Text");
    bind(library->confidence, "TessResultIteratorConfidence");
    bind(library->layout, "TessResultIteratorGetPageIteratorConst");
    bind(library->boundingBox, "TessPageIteratorBoundingBox");
    bind(library->deleteText, "TessDeleteText");
    if (!absent.empty())
        return RequestError{name + " lacks " + absent + ": " +
                            std::string(kTesseractLibraryRemedy)};

    // Leptonica, which Tesseract is built on, would tell the host's standard error about every odd
    // box. There is no setting for one caller; only the printing stops, for all of the process.
    constexpr int kNoMessages = 6;  // L_SEVERITY_NONE
    if (const auto setSeverity = reinterpret_cast<int (*)(int)>(dlsym(handle, "setMsgSeverity")))
        setSeverity(kNoMessages);

    library->releaseNumber = library->version();
    Dl_info where{};
    if (dladdr(reinterpret_cast<const void*>(library->version), &where) != 0)
        library->place = where.dli_fname;
    return std::shared_ptr<const TesseractLibrary>(library);
}

}  // namespace kestrelid::vision
