# orvane_require_packages(OPTION WHAT HINT PACKAGE...) for a part of the build that is
# optional: when OPTION was asked for outright (on the command line or in the cache) the
# packages are required; when it is on only by default and one is missing, OPTION turns off
# with a warning that names HINT, and the calling CMakeLists stops there. A macro, so that
# the packages found and the return() reach the caller's scope.
macro(orvane_require_packages option what hint)
  set(_orvane_missing FALSE)
  foreach(_orvane_package ${ARGN})
    if(${option}_ASKED)
      find_package(${_orvane_package} REQUIRED)
    else()
      find_package(${_orvane_package} QUIET)
      if(NOT ${_orvane_package}_FOUND)
        set(_orvane_missing TRUE)
      endif()
    endif()
  endforeach()
  if(_orvane_missing)
    string(REPLACE ";" ", " _orvane_packages "${ARGN}")
    message(WARNING "${_orvane_packages}: not all found, so ${what} are not built (install ${hint}, then configure with -D${option}=ON)")
    set(${option} OFF CACHE BOOL "Build ${what}" FORCE)
    return()
  endif()
endmacro()
