// Helpers of the glTF tests: the Khronos validator on a file, the file read back with tinygltf's loader, and
// the values of its accessors.
#pragma once

#include "Math/Quat.h"
#include "Math/Vector.h"

#include <gtest/gtest.h>
#include <tiny_gltf.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

namespace GltfTest
{
	// The validator's report of a file; the test fails when the file has an error.
	inline void ExpectValid(const std::string& File)
	{
		const std::string Command = std::string("'") + CVAI_NODE_EXECUTABLE + "' '" + CVAI_GLTF_VALIDATE_SCRIPT + "' '" + File + "' 2>&1";
		std::string Report;
		FILE* Pipe = popen(Command.c_str(), "r");
		ASSERT_NE(Pipe, nullptr);
		char Chunk[4096];
		for (size_t Got; (Got = std::fread(Chunk, 1, sizeof(Chunk), Pipe)) > 0;)
		{
			Report.append(Chunk, Got);
		}
		EXPECT_EQ(pclose(Pipe), 0) << Report;
	}

	inline tinygltf::Model Load(const std::string& File)
	{
		tinygltf::TinyGLTF Loader;
		tinygltf::Model Model;
		std::string Error;
		std::string Warning;
		const bool bBinary = File.size() > 4 && File.compare(File.size() - 4, 4, ".glb") == 0;
		const bool bLoaded = bBinary ? Loader.LoadBinaryFromFile(&Model, &Error, &Warning, File) : Loader.LoadASCIIFromFile(&Model, &Error, &Warning, File);
		EXPECT_TRUE(bLoaded) << Error;
		EXPECT_EQ(Warning, "");
		return Model;
	}

	// The elements of a float accessor, each as its components.
	inline std::vector<std::vector<float>> ReadFloats(const tinygltf::Model& Model, int Index)
	{
		const tinygltf::Accessor& Accessor = Model.accessors.at(Index);
		EXPECT_EQ(Accessor.componentType, TINYGLTF_COMPONENT_TYPE_FLOAT);
		const tinygltf::BufferView& View = Model.bufferViews.at(Accessor.bufferView);
		const int Components = tinygltf::GetNumComponentsInType(Accessor.type);
		const size_t Stride = View.byteStride ? View.byteStride : Components * sizeof(float);
		const unsigned char* Data = Model.buffers.at(View.buffer).data.data() + View.byteOffset + Accessor.byteOffset;
		std::vector<std::vector<float>> Elements(Accessor.count, std::vector<float>(Components));
		for (size_t Element = 0; Element < Accessor.count; ++Element)
		{
			std::memcpy(Elements[Element].data(), Data + Element * Stride, Components * sizeof(float));
		}
		return Elements;
	}

	inline std::vector<uint32_t> ReadIndices(const tinygltf::Model& Model, int Index)
	{
		const tinygltf::Accessor& Accessor = Model.accessors.at(Index);
		EXPECT_EQ(Accessor.componentType, TINYGLTF_COMPONENT_TYPE_UNSIGNED_INT);
		const tinygltf::BufferView& View = Model.bufferViews.at(Accessor.bufferView);
		std::vector<uint32_t> Indices(Accessor.count);
		std::memcpy(Indices.data(), Model.buffers.at(View.buffer).data.data() + View.byteOffset + Accessor.byteOffset, Accessor.count * sizeof(uint32_t));
		return Indices;
	}

	inline FVector3f ToVector(const std::vector<float>& Components)
	{
		return FVector3f(Components.at(0), Components.at(1), Components.at(2));
	}

	inline FQuat4f ToQuat(const std::vector<float>& Components)
	{
		return FQuat4f(Components.at(0), Components.at(1), Components.at(2), Components.at(3));
	}

	// An instance's transform as the file gives it: from the node's EXT_mesh_gpu_instancing attributes, or the
	// node's own TRS.
	struct FInstance
	{
		FVector3f Translation;
		FQuat4f Rotation;
		FVector3f Scale;
	};

	inline std::vector<FInstance> ReadInstances(const tinygltf::Model& Model, const tinygltf::Node& Node)
	{
		const tinygltf::Value& Attributes = Node.extensions.at("EXT_mesh_gpu_instancing").Get("attributes");
		const std::vector<std::vector<float>> Translations = ReadFloats(Model, Attributes.Get("TRANSLATION").GetNumberAsInt());
		const std::vector<std::vector<float>> Rotations = ReadFloats(Model, Attributes.Get("ROTATION").GetNumberAsInt());
		const std::vector<std::vector<float>> Scales = ReadFloats(Model, Attributes.Get("SCALE").GetNumberAsInt());
		EXPECT_EQ(Rotations.size(), Translations.size());
		EXPECT_EQ(Scales.size(), Translations.size());
		std::vector<FInstance> Instances;
		for (size_t Index = 0; Index < Translations.size(); ++Index)
		{
			Instances.push_back({ ToVector(Translations[Index]), ToQuat(Rotations.at(Index)), ToVector(Scales.at(Index)) });
		}
		return Instances;
	}

	// Equal rotations: a quaternion and its negation turn alike.
	inline bool SameRotation(const FQuat4f& A, const FQuat4f& B, float Tolerance = 1e-4f)
	{
		const float Dot = A.X * B.X + A.Y * B.Y + A.Z * B.Z + A.W * B.W;
		return std::abs(std::abs(Dot) - 1.0f) <= Tolerance;
	}
}
