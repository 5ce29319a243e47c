# The definitions UnrealBuildTool hands every module of a Development Editor build on the compiler's command
# line, so that they hold before a file's first #include, as in the editor: a file may test one of them before
# it includes anything, and a header that sees none of them (sol2 looks for UE_BUILD_* to know it is inside
# the engine) takes the same road as in the editor. No engine header defines them.
add_compile_definitions(
	UE_BUILD_DEVELOPMENT=1
	WITH_EDITOR=1
	WITH_EDITORONLY_DATA=1
	WITH_ENGINE=1
	UE_EDITOR=1
	WITH_DEV_AUTOMATION_TESTS=1
	WITH_PERF_AUTOMATION_TESTS=1
	IS_MONOLITHIC=0
	IS_PROGRAM=0)

# A module's API macro, as UBT defines it: DLLEXPORT while the module itself compiles, DLLIMPORT for every module
# that depends on it (and for anything that depends on those through their public dependencies).
function(headless_module_api_macro Target ModuleName)
	string(TOUPPER "${ModuleName}_API" Macro)
	target_compile_definitions(${Target} PRIVATE ${Macro}=DLLEXPORT INTERFACE ${Macro}=DLLIMPORT)
endfunction()
