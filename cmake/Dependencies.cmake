find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(ZLIB REQUIRED)
find_package(OpenSSL REQUIRED COMPONENTS Crypto)
find_package(ICU REQUIRED COMPONENTS uc)
find_package(fmt REQUIRED)
find_package(pugixml REQUIRED)
pkg_check_modules(PLIST REQUIRED IMPORTED_TARGET libplist-2.0)
pkg_check_modules(VIPS REQUIRED IMPORTED_TARGET vips)
pkg_check_modules(FFMPEG REQUIRED IMPORTED_TARGET libavformat libavcodec libswscale libavutil)
find_package(CLI11 REQUIRED)
find_package(nlohmann_json REQUIRED)

# Headers of dependencies are not held to our warnings.
add_library(zkmb_asio INTERFACE)
target_compile_definitions(zkmb_asio INTERFACE ASIO_STANDALONE ASIO_NO_DEPRECATED)
target_link_libraries(zkmb_asio INTERFACE Threads::Threads)
if(ZKMB_SANITIZERS MATCHES "thread")
  # The thread sanitizer does not know fences; without them Asio uses plain atomic operations.
  target_compile_definitions(zkmb_asio INTERFACE ASIO_DISABLE_FENCED_BLOCK)
endif()

# The archive and not the shared object, so that hosts get minizip's functions from this library.
find_library(ZKMB_MINIZIP_ARCHIVE NAMES libminizip.a REQUIRED)
add_library(zkmb_minizip_archive STATIC IMPORTED)
set_target_properties(zkmb_minizip_archive PROPERTIES
  IMPORTED_LOCATION ${ZKMB_MINIZIP_ARCHIVE}
  INTERFACE_LINK_LIBRARIES ZLIB::ZLIB)
