# The program's icon in the sizes desktop menus ask for, rendered from the one drawing
# (tarvik.svg) when CMake configures, so the PNGs never lag behind it. The window icon
# (src/app) and the package both take them from TARVIK_ICON_DIR.
find_program(RSVG_CONVERT rsvg-convert)
if(NOT RSVG_CONVERT)
  message(FATAL_ERROR "rsvg-convert fehlt (Paket librsvg2-bin); scripts/install-deps.sh installiert es.")
endif()
set(TARVIK_ICON_SVG ${CMAKE_CURRENT_LIST_DIR}/tarvik.svg)
set(TARVIK_ICON_DIR ${CMAKE_BINARY_DIR}/icons/hicolor)
set(TARVIK_ICON_PNGS "")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${TARVIK_ICON_SVG})
foreach(size 48 64 128 256)
  set(png ${TARVIK_ICON_DIR}/${size}x${size}/apps/tarvik.png)
  if(NOT EXISTS ${png} OR ${TARVIK_ICON_SVG} IS_NEWER_THAN ${png})
    file(MAKE_DIRECTORY ${TARVIK_ICON_DIR}/${size}x${size}/apps)
    execute_process(COMMAND ${RSVG_CONVERT} -w ${size} -h ${size} -o ${png} ${TARVIK_ICON_SVG}
                    RESULT_VARIABLE rc ERROR_VARIABLE err)
    if(NOT rc EQUAL 0)
      message(FATAL_ERROR "Das Symbol ${size}x${size} kann nicht erzeugt werden: ${err}")
    endif()
  endif()
  list(APPEND TARVIK_ICON_PNGS ${png})
endforeach()
