# The vendor's own headers and libraries, in place of the stand-in.
if(NOT IS_DIRECTORY "${MVQ_QCMAP_PLATFORM_ROOT}/include")
  message(FATAL_ERROR "MVQ_QCMAP_PLATFORM=device needs MVQ_QCMAP_PLATFORM_ROOT, a folder with "
                      "include/ and lib/; it is '${MVQ_QCMAP_PLATFORM_ROOT}'")
endif()

foreach(name IN ITEMS qcmap_client qmi_client mutil)
  find_library(MVQ_QCMAP_${name} ${name} PATHS "${MVQ_QCMAP_PLATFORM_ROOT}/lib" REQUIRED
               NO_DEFAULT_PATH)
  add_library(${name} UNKNOWN IMPORTED)
  set_target_properties(${name} PROPERTIES
    IMPORTED_LOCATION "${MVQ_QCMAP_${name}}"
    INTERFACE_INCLUDE_DIRECTORIES "${MVQ_QCMAP_PLATFORM_ROOT}/include")
endforeach()
