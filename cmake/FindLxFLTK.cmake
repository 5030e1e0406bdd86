# Finds the FLTK 1.3 library and headers for the graphical dialogs, giving the imported
# target LxFLTK::fltk. Unlike CMake's own FLTK module this asks for neither the fluid program
# nor the OpenGL headers, which the dialogs do not use; the dialogs also call Xlib directly.
include(FindPackageHandleStandardArgs)

find_path(LxFLTK_INCLUDE_DIR NAMES FL/Fl.H PATH_SUFFIXES fltk fltk1.3)
find_library(LxFLTK_LIBRARY NAMES fltk)
find_library(LxFLTK_X11_LIBRARY NAMES X11)

find_package_handle_standard_args(LxFLTK REQUIRED_VARS LxFLTK_LIBRARY LxFLTK_INCLUDE_DIR
                                                       LxFLTK_X11_LIBRARY)

if(LxFLTK_FOUND AND NOT TARGET LxFLTK::fltk)
  add_library(LxFLTK::fltk UNKNOWN IMPORTED)
  set_target_properties(LxFLTK::fltk PROPERTIES
    IMPORTED_LOCATION "${LxFLTK_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${LxFLTK_INCLUDE_DIR}"
    INTERFACE_LINK_LIBRARIES "${LxFLTK_X11_LIBRARY}")
endif()
mark_as_advanced(LxFLTK_INCLUDE_DIR LxFLTK_LIBRARY LxFLTK_X11_LIBRARY)
