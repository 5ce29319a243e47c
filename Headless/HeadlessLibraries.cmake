# Each folder under Headless/ is one engine module, built as one shared library as the editor builds each
# module: Public/ is its include path and Private/ its sources. As in UnrealBuildTool, a module's public
# dependencies lend their include paths to whoever depends on it; links never pass on, so every library
# (and the editor module) links exactly the modules it names and resolves nothing through another's.
#
#   headless_library(Name [PUBLIC_DEPS Module...] [PRIVATE_DEPS Module...] [PRIVATE_LIBS target...]
#                         [EXPORTED_LIBS target...])
#
# Modules are named as the engine names them (Core, Engine, ...); EXPORTED_LIBS are third-party libraries
# whose symbols the module hands on to its dependents (the host exports Lua).
function(headless_library Name)
	cmake_parse_arguments(ARG "" "" "PUBLIC_DEPS;PRIVATE_DEPS;PRIVATE_LIBS;EXPORTED_LIBS" ${ARGN})
	set(Target Headless${Name})
	file(GLOB_RECURSE Sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${Name}/Private/*.cpp)
	add_library(${Target} SHARED ${Sources})
	target_include_directories(${Target} PUBLIC ${CMAKE_CURRENT_SOURCE_DIR}/${Name}/Public PRIVATE ${CMAKE_CURRENT_SOURCE_DIR}/${Name}/Private)
	headless_module_api_macro(${Target} ${Name})
	foreach(Dependency IN LISTS ARG_PUBLIC_DEPS)
		target_include_directories(${Target} PUBLIC $<TARGET_PROPERTY:Headless${Dependency},INTERFACE_INCLUDE_DIRECTORIES>)
		target_compile_definitions(${Target} INTERFACE $<TARGET_PROPERTY:Headless${Dependency},INTERFACE_COMPILE_DEFINITIONS>)
	endforeach()
	list(TRANSFORM ARG_PUBLIC_DEPS PREPEND Headless)
	list(TRANSFORM ARG_PRIVATE_DEPS PREPEND Headless)
	target_link_libraries(${Target} PRIVATE ${ARG_PUBLIC_DEPS} ${ARG_PRIVATE_DEPS} ${ARG_PRIVATE_LIBS})
	if(ARG_EXPORTED_LIBS)
		target_link_libraries(${Target} PUBLIC ${ARG_EXPORTED_LIBS})
	endif()
	set_property(GLOBAL APPEND PROPERTY HEADLESS_MODULES ${Name})
endfunction()
