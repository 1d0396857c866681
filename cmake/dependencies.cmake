# Everything the project links, from Debian's packages (packaging/debian-packages.txt names them once).
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(OpenSSL REQUIRED)
find_package(CLI11 REQUIRED)
find_package(fmt REQUIRED)
pkg_check_modules(LMDB REQUIRED IMPORTED_TARGET lmdb)
pkg_check_modules(JANSSON REQUIRED IMPORTED_TARGET jansson)
pkg_check_modules(SMARTCOLS REQUIRED IMPORTED_TARGET smartcols)
