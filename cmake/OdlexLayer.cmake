# odlex_layer(NAME DIRS DEPS...): a static library made of every .cpp under DIRS (one folder,
# or a ;-list of folders whose code depends on each other), seeing the public headers and the
# private src/ tree.
function(odlex_layer name dirs)
  set(sources)
  foreach(dir IN LISTS dirs)
    file(GLOB_RECURSE dir_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${dir}/*.cpp)
    list(APPEND sources ${dir_sources})
  endforeach()
  add_library(${name} STATIC ${sources})
  target_include_directories(${name}
    PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:include>
    PRIVATE ${PROJECT_SOURCE_DIR}/src)
  target_link_libraries(${name} PUBLIC ${ARGN})
endfunction()
