# Cross-compilation for arm64 with Debian's compiler and multiarch libraries; tools/cross-arm64 installs them.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

# The default path contains the libraries of the native architecture.
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/aarch64-linux-gnu/pkgconfig:/usr/share/pkgconfig)

# moc, rcc and other tools that run during the build.
set(QT_HOST_PATH /usr)
set(QT_HOST_PATH_CMAKE_DIR /usr/lib/${CMAKE_HOST_SYSTEM_PROCESSOR}-linux-gnu/cmake)

# CMake runs target executables through the emulator, so the kernel needs no binfmt entry for it.
find_program(PENWICK_EMULATOR NAMES qemu-aarch64-static qemu-aarch64)
if(PENWICK_EMULATOR)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${PENWICK_EMULATOR})
endif()
