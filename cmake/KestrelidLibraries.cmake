# Libraries that Kestrelid links: for its own build, and for hosts that link an installed static library.
find_package(PkgConfig REQUIRED)

set(KESTRELID_MISSING_PACKAGES "")  # Debian packages
set(KESTRELID_PC_REQUIRES "")  # names that pkg-config knows

# kestrelid_require(TARGET PKG_CONFIG_NAME DEBIAN_PACKAGE): an imported target PkgConfig::TARGET.
function(kestrelid_require target module package)
    pkg_check_modules(${target} QUIET IMPORTED_TARGET ${module})
    if(NOT ${target}_FOUND)
        list(APPEND KESTRELID_MISSING_PACKAGES ${package})
        set(KESTRELID_MISSING_PACKAGES "${KESTRELID_MISSING_PACKAGES}" PARENT_SCOPE)
    endif()
    set(KESTRELID_PC_REQUIRES ${KESTRELID_PC_REQUIRES} ${module} PARENT_SCOPE)
endfunction()

kestrelid_require(ICU icu-uc libicu-dev)
kestrelid_require(TurboJPEG libturbojpeg libturbojpeg0-dev)
kestrelid_require(PNG libpng libpng-dev)
kestrelid_require(WebP libwebp libwebp-dev)
kestrelid_require(WebPDemux libwebpdemux libwebp-dev)
kestrelid_require(TIFF libtiff-4 libtiff-dev)
kestrelid_require(HEIF libheif libheif-dev)
kestrelid_require(EXIF libexif libexif-dev)
kestrelid_require(GIO gio-2.0 libglib2.0-dev)
kestrelid_require(GStreamer gstreamer-1.0 libgstreamer1.0-dev)
kestrelid_require(GStreamerApp gstreamer-app-1.0 libgstreamer-plugins-base1.0-dev)
kestrelid_require(GStreamerVideo gstreamer-video-1.0 libgstreamer-plugins-base1.0-dev)

find_package(OpenCV 4.6 QUIET COMPONENTS core imgproc)
if(NOT OpenCV_FOUND)
    list(APPEND KESTRELID_MISSING_PACKAGES libopencv-dev)
endif()
find_package(Threads REQUIRED)
