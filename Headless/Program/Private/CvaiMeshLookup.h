// The static mesh that a command's PATH names, completed as the module's verbs complete a path: SM_Rock,
// Meshes/SM_Rock, /Game/Meshes/SM_Rock and /Game/Meshes/SM_Rock.SM_Rock all name the same mesh.
#pragma once

#include <string>

class UStaticMesh;

namespace UE::Headless::Cvai
{
	// Why the package that PATH names cannot be loaded, when its file exists but is not one this build reads; empty
	// otherwise.
	[[nodiscard]] std::string DescribePackageLoadFault(const std::string& Path);

	// The mesh, or null with the reason: what is wrong with its package file, or that there is no such mesh.
	UStaticMesh* LoadStaticMesh(const std::string& Path, std::string& OutError);
}
