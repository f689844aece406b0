# Libraries from outside. Each one that is missing stops here with the Debian package that brings it.
include(KestrelidLibraries)

find_path(ASIO_INCLUDE_DIR asio.hpp)
if(NOT ASIO_INCLUDE_DIR)
    list(APPEND KESTRELID_MISSING_PACKAGES libasio-dev)
endif()
find_path(TL_EXPECTED_INCLUDE_DIR tl/expected.hpp)
if(NOT TL_EXPECTED_INCLUDE_DIR)
    list(APPEND KESTRELID_MISSING_PACKAGES libexpected-dev)
endif()

# Debian 13 and later bring the headers as libonnxruntime-dev; earlier ones get them from tools/setup.
find_path(ONNXRUNTIME_INCLUDE_DIR onnxruntime_c_api.h
    PATH_SUFFIXES onnxruntime HINTS "${KESTRELID_DEPS_DIR}/onnxruntime/include")

if(KESTRELID_SCREENS)
    find_package(Qt6 6.4 QUIET OPTIONAL_COMPONENTS Core Gui Widgets Qml Quick QuickWidgets LinguistTools)
    if(NOT (Qt6Core_FOUND AND Qt6Gui_FOUND AND Qt6Widgets_FOUND))
        list(APPEND KESTRELID_MISSING_PACKAGES qt6-base-dev)
    endif()
    if(NOT (Qt6Qml_FOUND AND Qt6Quick_FOUND AND Qt6QuickWidgets_FOUND))
        list(APPEND KESTRELID_MISSING_PACKAGES qt6-declarative-dev)
    endif()
    if(NOT Qt6LinguistTools_FOUND)
        list(APPEND KESTRELID_MISSING_PACKAGES qt6-tools-dev qt6-l10n-tools)
    endif()
endif()

if(KESTRELID_MISSING_PACKAGES)
    list(REMOVE_DUPLICATES KESTRELID_MISSING_PACKAGES)
    list(JOIN KESTRELID_MISSING_PACKAGES " " packages)
    message(FATAL_ERROR "Missing Debian packages: ${packages}\nInstall them with tools/setup or apt-get.")
endif()
if(NOT ONNXRUNTIME_INCLUDE_DIR)
    message(FATAL_ERROR "No ONNX Runtime headers: run tools/setup, or install libonnxruntime-dev where it exists.")
endif()
