# What cpack reads first where the package is for arm64.
set(ENV{VELA_SYSROOT} ${CPACK_VELA_SYSROOT})
set(SHLIBDEPS_EXECUTABLE ${CMAKE_CURRENT_LIST_DIR}/shlibdeps)
