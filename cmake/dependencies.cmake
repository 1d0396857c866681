# What the libraries link, from Debian's packages (packaging/debian-packages.txt names them once). A tool
# finds what only it needs.
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(OpenSSL REQUIRED)
pkg_check_modules(LMDB REQUIRED IMPORTED_TARGET lmdb)
pkg_check_modules(JANSSON REQUIRED IMPORTED_TARGET jansson)
pkg_check_modules(CRYPT REQUIRED IMPORTED_TARGET libcrypt)
