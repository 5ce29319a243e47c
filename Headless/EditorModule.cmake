# An editor module built as UnrealBuildTool builds it, so that whatever would not build in the editor does
# not build here either:
#  - its dependencies are read from its <Name>.Build.cs: it sees the include paths of exactly those modules
#    (and of their public dependencies, as UBT hands them on), links exactly those, and a library that
#    leaves a symbol unresolved does not link;
#  - every file includes only its own module's headers, the headers of modules that Build.cs lists, and
#    the C and C++ standard library (checked before anything is compiled);
#  - its .cpp files compile one by one and also together as one unity translation unit, in both orders,
#    as UBT's unity build puts them into one file;
#  - warnings are errors, shadowing included, and a local or parameter that hides a namespace's variable or
#    enumerator (which MSVC reports and GCC does not) is found by Tools/ShadowVariableCheck.
#
#   headless_editor_module(Name SourceDir)   the module's folder is SourceDir/Name, as in a plugin's Source/
#
# Targets: <Name> (the module library the editor loads) and <Name>Objects (its compiled files, for tests
# that call the module's own functions).

set(EDITOR_MODULE_WARNINGS -Werror -Wall -Wextra -Wshadow -Wundef -Wnon-virtual-dtor -Wno-unused-parameter -Wno-missing-field-initializers)

# The module names in the PublicDependencyModuleNames / PrivateDependencyModuleNames lists of a Build.cs,
# comments removed first.
function(read_module_dependencies BuildRulesFile OutVar)
	file(READ ${BuildRulesFile} Text)
	while(TRUE)
		string(FIND "${Text}" "/*" CommentStart)
		if(CommentStart EQUAL -1)
			break()
		endif()
		string(SUBSTRING "${Text}" ${CommentStart} -1 Rest)
		string(FIND "${Rest}" "*/" CommentLength)
		string(SUBSTRING "${Text}" 0 ${CommentStart} Before)
		if(CommentLength EQUAL -1)
			set(Text "${Before}")
		else()
			math(EXPR AfterStart "${CommentLength} + 2")
			string(SUBSTRING "${Rest}" ${AfterStart} -1 After)
			set(Text "${Before} ${After}")
		endif()
	endwhile()
	string(REGEX REPLACE "//[^\n]*" "" Text "${Text}")
	string(REGEX MATCHALL "(Public|Private)DependencyModuleNames[ \t\r\n]*\\.[ \t\r\n]*Add(Range)?[ \t\r\n]*\\([^;]*\\)" Calls "${Text}")
	set(Modules)
	foreach(Call IN LISTS Calls)
		string(REGEX MATCHALL "\"[^\"]*\"" Names "${Call}")
		foreach(QuotedName IN LISTS Names)
			string(REPLACE "\"" "" ModuleName "${QuotedName}")
			list(APPEND Modules ${ModuleName})
		endforeach()
	endforeach()
	list(REMOVE_DUPLICATES Modules)
	set(${OutVar} ${Modules} PARENT_SCOPE)
endfunction()

function(headless_editor_module Name SourceDir)
	set(ModuleDir ${SourceDir}/${Name})
	set(BinaryDir ${CMAKE_BINARY_DIR}/Modules/${Name})
	set(BuildRules ${ModuleDir}/${Name}.Build.cs)
	set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${BuildRules})
	read_module_dependencies(${BuildRules} Dependencies)
	get_property(KnownModules GLOBAL PROPERTY HEADLESS_MODULES)
	set(DependencyTargets)
	foreach(Dependency IN LISTS Dependencies)
		if(NOT Dependency IN_LIST KnownModules)
			message(FATAL_ERROR "${BuildRules} lists the module '${Dependency}', which the headless editor does not provide (it has: ${KnownModules})")
		endif()
		list(APPEND DependencyTargets Headless${Dependency})
	endforeach()

	# UBT gathers every .cpp under the module's folder.
	file(GLOB_RECURSE Sources CONFIGURE_DEPENDS ${ModuleDir}/*.cpp)
	file(GLOB_RECURSE Files CONFIGURE_DEPENDS ${ModuleDir}/*.cpp ${ModuleDir}/*.h ${ModuleDir}/*.inl)
	list(SORT Sources)
	set(IncludeDirs ${ModuleDir}/Public ${ModuleDir}/Private)

	# Includes are checked before anything of the module compiles.
	set(IncludeStamp ${BinaryDir}/${Name}.includes-checked)
	add_custom_command(OUTPUT ${IncludeStamp}
		COMMAND ${CMAKE_COMMAND} "-DMODULE_NAME=${Name}" "-DMODULE_DIR=${ModuleDir}" "-DHEADLESS_DIR=${PROJECT_SOURCE_DIR}/Headless"
			"-DKNOWN_MODULES=${KnownModules}" "-DLISTED_MODULES=${Dependencies}" "-DSTAMP=${IncludeStamp}"
			-P ${PROJECT_SOURCE_DIR}/Headless/CheckModuleIncludes.cmake
		DEPENDS ${Files} ${BuildRules} ${PROJECT_SOURCE_DIR}/Headless/CheckModuleIncludes.cmake
		COMMENT "Checking the includes of ${Name} against its Build.cs"
		VERBATIM)
	add_custom_target(${Name}Includes DEPENDS ${IncludeStamp})

	add_library(${Name}Objects OBJECT ${Sources})
	target_include_directories(${Name}Objects PUBLIC ${IncludeDirs})
	target_link_libraries(${Name}Objects PRIVATE ${DependencyTargets})
	headless_module_api_macro(${Name}Objects ${Name})
	target_compile_options(${Name}Objects PRIVATE ${EDITOR_MODULE_WARNINGS} -fvisibility=hidden -fvisibility-inlines-hidden)
	add_dependencies(${Name}Objects ${Name}Includes)

	# The unity translation units: every .cpp included into one file, once in each order.
	set(UnityForward "// Generated: every .cpp of ${Name}, as one translation unit.\n")
	foreach(Source IN LISTS Sources)
		string(APPEND UnityForward "#include \"${Source}\"\n")
	endforeach()
	list(REVERSE Sources)
	set(UnityBackward "// Generated: every .cpp of ${Name}, as one translation unit, in reverse order.\n")
	foreach(Source IN LISTS Sources)
		string(APPEND UnityBackward "#include \"${Source}\"\n")
	endforeach()
	file(CONFIGURE OUTPUT ${BinaryDir}/Unity/Module.${Name}.cpp CONTENT "${UnityForward}" @ONLY)
	file(CONFIGURE OUTPUT ${BinaryDir}/Unity/Module.${Name}.Reversed.cpp CONTENT "${UnityBackward}" @ONLY)
	add_library(${Name}Unity OBJECT ${BinaryDir}/Unity/Module.${Name}.cpp ${BinaryDir}/Unity/Module.${Name}.Reversed.cpp)
	target_include_directories(${Name}Unity PRIVATE ${IncludeDirs})
	target_link_libraries(${Name}Unity PRIVATE ${DependencyTargets})
	headless_module_api_macro(${Name}Unity ${Name})
	target_compile_options(${Name}Unity PRIVATE ${EDITOR_MODULE_WARNINGS} -fvisibility=hidden -fvisibility-inlines-hidden)
	add_dependencies(${Name}Unity ${Name}Includes)

	# Declarations that hide a namespace's variable or enumerator, which GCC does not report, checked on the
	# unity translation unit: there, as in UBT's unity build, every file's anonymous namespace encloses the
	# files after it.
	set(ShadowStamp ${BinaryDir}/${Name}.shadowing-checked)
	add_custom_command(OUTPUT ${ShadowStamp}
		COMMAND ShadowVariableCheck ${CMAKE_BINARY_DIR} ${BinaryDir}/Unity/Module.${Name}.cpp ${ModuleDir}
		COMMAND ${CMAKE_COMMAND} -E touch ${ShadowStamp}
		DEPENDS ShadowVariableCheck ${Files} ${BinaryDir}/Unity/Module.${Name}.cpp
		COMMENT "Checking ${Name} for declarations that hide others"
		VERBATIM)
	add_custom_target(${Name}Shadowing DEPENDS ${ShadowStamp})
	add_dependencies(${Name}Shadowing ${Name}Includes)

	add_library(${Name} SHARED $<TARGET_OBJECTS:${Name}Objects>)
	target_link_libraries(${Name} PRIVATE ${DependencyTargets})
	target_link_options(${Name} PRIVATE -Wl,--no-undefined)
	add_dependencies(${Name} ${Name}Unity ${Name}Shadowing)
endfunction()
