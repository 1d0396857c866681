# What an installation holds: the shared libraries with their headers, pkg-config and CMake files, and the services
# with what systemd has to know of them. Programs are installed where they are made.
#
# Everything finds the rest from where it stands, so that an installation can be moved, and the prefix may also be
# given when installing.
include(CMakePackageConfigHelpers)

set(TW_PROGRAMS twctl searchd unenrolld)
set(TW_CMAKE_FOLDER ${CMAKE_INSTALL_LIBDIR}/cmake/twobject)
file(RELATIVE_PATH TW_PREFIX_FROM_PKGCONFIG ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
file(RELATIVE_PATH TW_LIBRARIES_FROM_PROGRAMS ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})

# tw_install_library(<name> <description> [<package that its headers need>]): the library and its pkg-config file.
function(tw_install_library library description)
  set(requires ${ARGN})
  set_target_properties(${library} PROPERTIES INSTALL_RPATH "$ORIGIN")
  install(TARGETS ${library} EXPORT twobjectTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  configure_file(${PROJECT_SOURCE_DIR}/cmake/library.pc.in ${PROJECT_BINARY_DIR}/${library}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/${library}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endfunction()

tw_install_library(twobject "The appliance's configuration as typed records" twconfig)
tw_install_library(twconfig "The appliance's configuration store" jansson)
tw_install_library(twaction "Lasting records of the jobs that are done for nodes")
tw_install_library(twbeanstalk "Client of the work queue beanstalkd")
tw_install_library(twinfod "Live state, published and read by any process")
tw_install_library(twlog "Log lines to the journal or to stderr")
tw_install_library(twmisc "Small helpers that several programs of the appliance share")

foreach(folder include platform/action/include platform/beanstalk/include platform/config/include
    platform/infod/include platform/log/include platform/misc/include)
  install(DIRECTORY ${folder}/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h" PATTERN "*.hpp")
endforeach()

install(EXPORT twobjectTargets NAMESPACE twobject:: DESTINATION ${TW_CMAKE_FOLDER})
configure_package_config_file(cmake/twobjectConfig.cmake.in twobjectConfig.cmake
  INSTALL_DESTINATION ${TW_CMAKE_FOLDER})
write_basic_package_version_file(twobjectConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/twobjectConfig.cmake ${PROJECT_BINARY_DIR}/twobjectConfigVersion.cmake
  DESTINATION ${TW_CMAKE_FOLDER})

set_target_properties(${TW_PROGRAMS} PROPERTIES INSTALL_RPATH "$ORIGIN/${TW_LIBRARIES_FROM_PROGRAMS}")

# A unit says where its program is, with the prefix that is installed to.
foreach(service searchd unenrolld)
  install(CODE "
    get_filename_component(TW_SERVICE_FOLDER \"\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_SBINDIR}\" ABSOLUTE)
    configure_file(\"${PROJECT_SOURCE_DIR}/packaging/systemd/${service}.service.in\"
      \"${PROJECT_BINARY_DIR}/packaging/${service}.service\" @ONLY)")
  install(FILES ${PROJECT_BINARY_DIR}/packaging/${service}.service DESTINATION lib/systemd/system)
endforeach()
# The reference is there when scripts/docs has made it.
install(DIRECTORY build/docs/man/man3 DESTINATION ${CMAKE_INSTALL_MANDIR} OPTIONAL)
install(DIRECTORY build/docs/html DESTINATION ${CMAKE_INSTALL_DOCDIR} OPTIONAL)
install(FILES packaging/sysusers.d/twobject.conf DESTINATION lib/sysusers.d)
install(FILES packaging/tmpfiles.d/twobject.conf DESTINATION lib/tmpfiles.d)
