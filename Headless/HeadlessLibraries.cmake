# Each folder under Headless/ is one shared library, as each engine module is: Public/ is its include path.
function(headless_library Name)
	cmake_parse_arguments(ARG "" "" "DEPS" ${ARGN})
	file(GLOB_RECURSE Sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${Name}/Private/*.cpp)
	add_library(Headless${Name} SHARED ${Sources})
	target_include_directories(Headless${Name} PUBLIC ${PROJECT_SOURCE_DIR}/Headless/${Name}/Public
		PRIVATE ${PROJECT_SOURCE_DIR}/Headless/${Name}/Private)
	target_link_libraries(Headless${Name} PUBLIC ${ARG_DEPS})
endfunction()
