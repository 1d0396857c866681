# What an installation holds: the shared libraries, their public headers and their pkg-config files. Programs
# are installed where they are made.
foreach(library twobject twaction twbeanstalk twconfig twinfod twlog twmisc)
  install(TARGETS ${library} LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
endforeach()
install(DIRECTORY include/ platform/action/include/ platform/beanstalk/include/ platform/config/include/
  platform/infod/include/ platform/log/include/ platform/misc/include/
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} FILES_MATCHING PATTERN "*.h" PATTERN "*.hpp")

# pkg-config files find their prefix from where they stand, so that an installation can be moved.
file(RELATIVE_PATH TW_PREFIX_FROM_PKGCONFIG
  ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
foreach(package twobject twconfig)
  configure_file(cmake/${package}.pc.in ${package}.pc @ONLY)
  install(FILES ${CMAKE_CURRENT_BINARY_DIR}/${package}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
endforeach()
