# Fails when a file of an editor module includes a header that the module cannot see in the editor: one of
# an engine module that its Build.cs does not list, a harness-only header, or a library outside the engine
# (only the C and C++ standard library is there for every module). Run with cmake -P and
#   MODULE_NAME, MODULE_DIR, HEADLESS_DIR, KNOWN_MODULES (the stand-in's modules), LISTED_MODULES, STAMP.

cmake_minimum_required(VERSION 3.20)

# Headers that other modules hand on: the host (CorvaneAI) exports Lua and sol2.
set(LuaHeaders lua.h lua.hpp lualib.h lauxlib.h luaconf.h)

set(StandardHeaders
	algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono cinttypes climits clocale cmath
	codecvt compare complex concepts condition_variable coroutine csetjmp csignal cstdarg cstddef cstdint cstdio cstdlib cstring ctime
	cuchar cwchar cwctype deque exception execution filesystem format forward_list fstream functional future initializer_list iomanip
	ios iosfwd iostream istream iterator latch limits list locale map memory memory_resource mutex new numbers numeric optional ostream
	queue random ranges ratio regex scoped_allocator semaphore set shared_mutex source_location span sstream stack stdexcept stop_token
	streambuf string string_view syncstream system_error thread tuple type_traits typeindex typeinfo unordered_map unordered_set
	utility valarray variant vector version
	assert.h ctype.h errno.h float.h inttypes.h limits.h locale.h math.h setjmp.h signal.h stdarg.h stddef.h stdint.h stdio.h stdlib.h
	string.h time.h uchar.h wchar.h wctype.h)

file(GLOB_RECURSE Files ${MODULE_DIR}/*.cpp ${MODULE_DIR}/*.h ${MODULE_DIR}/*.inl)
set(Faults)
foreach(File IN LISTS Files)
	file(STRINGS ${File} Lines REGEX "^[ \t]*#[ \t]*include[ \t]*[<\"]")
	get_filename_component(FileDir ${File} DIRECTORY)
	file(RELATIVE_PATH Shown ${MODULE_DIR}/.. ${File})
	foreach(Line IN LISTS Lines)
		string(REGEX REPLACE "^[ \t]*#[ \t]*include[ \t]*([<\"])([^>\"]*)[>\"].*$" "\\1" Bracket "${Line}")
		string(REGEX REPLACE "^[ \t]*#[ \t]*include[ \t]*([<\"])([^>\"]*)[>\"].*$" "\\2" Header "${Line}")
		# The module's own headers: next to the file (quoted includes only), under Public/ or Private/.
		if((Bracket STREQUAL "\"" AND EXISTS ${FileDir}/${Header}) OR EXISTS ${MODULE_DIR}/Public/${Header} OR EXISTS ${MODULE_DIR}/Private/${Header})
			continue()
		endif()
		if(Header MATCHES "^Headless/")
			list(APPEND Faults "${Shown} includes \"${Header}\", a harness-only header that the editor does not have")
			continue()
		endif()
		set(Owner "")
		if(Header IN_LIST LuaHeaders OR Header MATCHES "^sol/")
			set(Owner CorvaneAI)
		else()
			foreach(Module IN LISTS KNOWN_MODULES)
				if(EXISTS ${HEADLESS_DIR}/${Module}/Public/${Header})
					set(Owner ${Module})
					break()
				endif()
			endforeach()
		endif()
		if(Owner STREQUAL "")
			if(Bracket STREQUAL "<" AND Header IN_LIST StandardHeaders)
				continue()
			endif()
			list(APPEND Faults "${Shown} includes \"${Header}\", which neither the module nor any engine module it may depend on provides")
		elseif(NOT Owner IN_LIST LISTED_MODULES)
			list(APPEND Faults "${Shown} includes \"${Header}\" of the module ${Owner}, which ${MODULE_NAME}.Build.cs does not list")
		endif()
	endforeach()
endforeach()

if(Faults)
	list(JOIN Faults "\n  " Text)
	message(FATAL_ERROR "${MODULE_NAME} reaches outside its dependencies:\n  ${Text}")
endif()
file(TOUCH ${STAMP})
