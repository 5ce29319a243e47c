#include "GltfNodes.h"

#include "Engine/NaniteAssemblyData.h"
#include "Headless/YUpFrame.h"

namespace UE::Headless
{
	namespace
	{
		constexpr const char* InstancingExtension = "EXT_mesh_gpu_instancing";

		struct FGltfTransform
		{
			FVector3f Translation;
			FQuat4f Rotation;
			FVector3f Scale;
		};

		FGltfTransform ToGltfTransform(const FTransform3f& Transform)
		{
			// Both want a unit quaternion; a transform edited by hand may hold one a little off.
			return { ToYUpPoint(Transform.GetTranslation()), SwapYUpRotation(Transform.GetRotation().GetNormalized()), SwapYUpAxes(Transform.GetScale3D()) };
		}

		int32 AddRootNode(FGltfDocument& Document, tinygltf::Node&& Node)
		{
			tinygltf::Model& Model = Document.GetModel();
			Model.nodes.push_back(std::move(Node));
			const int32 Index = (int32)Model.nodes.size() - 1;
			Model.scenes[0].nodes.push_back(Index);
			return Index;
		}

		// A part's instances: how many there are, how many were written so far, and where they go (its
		// accessors, or its node).
		struct FPartInstances
		{
			int64 Count = 0;
			int64 Written = 0;
			int32 Accessors[3] = { INDEX_NONE, INDEX_NONE, INDEX_NONE };
			float* Translations = nullptr;
			float* Rotations = nullptr;
			float* Scales = nullptr;
			int32 Node = INDEX_NONE;
		};

		void AddInstancingNodes(FGltfDocument& Document, const TArray<FNaniteAssemblyNode>& Nodes, const std::vector<FGltfPart>& Parts,
			std::vector<FPartInstances>& Instances)
		{
			int64 Total = 0;
			for (const FPartInstances& Part : Instances)
			{
				Total += Part.Count;
			}
			Document.ReserveBytes(Total * (3 + 4 + 3) * (int64)sizeof(float));
			bool bAnyInstances = false;
			for (size_t PartIndex = 0; PartIndex < Parts.size(); ++PartIndex)
			{
				FPartInstances& Part = Instances[PartIndex];
				if (Part.Count == 0)
				{
					continue;
				}
				Part.Accessors[0] = Document.AddAccessor(TINYGLTF_COMPONENT_TYPE_FLOAT, TINYGLTF_TYPE_VEC3, Part.Count, 0);
				Part.Accessors[1] = Document.AddAccessor(TINYGLTF_COMPONENT_TYPE_FLOAT, TINYGLTF_TYPE_VEC4, Part.Count, 0);
				Part.Accessors[2] = Document.AddAccessor(TINYGLTF_COMPONENT_TYPE_FLOAT, TINYGLTF_TYPE_VEC3, Part.Count, 0);
				tinygltf::Value::Object Attributes;
				Attributes["TRANSLATION"] = tinygltf::Value(Part.Accessors[0]);
				Attributes["ROTATION"] = tinygltf::Value(Part.Accessors[1]);
				Attributes["SCALE"] = tinygltf::Value(Part.Accessors[2]);
				tinygltf::Value::Object Extension;
				Extension["attributes"] = tinygltf::Value(std::move(Attributes));
				tinygltf::Node Node;
				Node.name = Parts[PartIndex].Name;
				Node.mesh = Parts[PartIndex].Mesh;
				Node.extensions[InstancingExtension] = tinygltf::Value(std::move(Extension));
				AddRootNode(Document, std::move(Node));
				bAnyInstances = true;
			}
			if (!bAnyInstances)
			{
				return;
			}
			Document.GetModel().extensionsUsed.push_back(InstancingExtension);
			// The buffer stays where it is from here on.
			for (FPartInstances& Part : Instances)
			{
				if (Part.Count > 0)
				{
					Part.Translations = (float*)Document.GetAccessorData(Part.Accessors[0]);
					Part.Rotations = (float*)Document.GetAccessorData(Part.Accessors[1]);
					Part.Scales = (float*)Document.GetAccessorData(Part.Accessors[2]);
				}
			}

			// One pass over the nodes, each written straight into its part's accessors.
			for (const FNaniteAssemblyNode& Node : Nodes)
			{
				if (Node.PartIndex < 0 || Node.PartIndex >= (int32)Parts.size())
				{
					continue;
				}
				FPartInstances& Part = Instances[Node.PartIndex];
				const FGltfTransform Transform = ToGltfTransform(Node.Transform);
				float* Translation = Part.Translations + Part.Written * 3;
				float* Rotation = Part.Rotations + Part.Written * 4;
				float* Scale = Part.Scales + Part.Written * 3;
				Translation[0] = Transform.Translation.X;
				Translation[1] = Transform.Translation.Y;
				Translation[2] = Transform.Translation.Z;
				Rotation[0] = Transform.Rotation.X;
				Rotation[1] = Transform.Rotation.Y;
				Rotation[2] = Transform.Rotation.Z;
				Rotation[3] = Transform.Rotation.W;
				Scale[0] = Transform.Scale.X;
				Scale[1] = Transform.Scale.Y;
				Scale[2] = Transform.Scale.Z;
				++Part.Written;
			}
		}

		void AddInstanceChildNodes(FGltfDocument& Document, const TArray<FNaniteAssemblyNode>& Nodes, const std::vector<FGltfPart>& Parts,
			std::vector<FPartInstances>& Instances)
		{
			tinygltf::Model& Model = Document.GetModel();
			for (size_t PartIndex = 0; PartIndex < Parts.size(); ++PartIndex)
			{
				if (Instances[PartIndex].Count > 0)
				{
					tinygltf::Node Node;
					Node.name = Parts[PartIndex].Name;
					Node.children.reserve((size_t)Instances[PartIndex].Count);
					Instances[PartIndex].Node = AddRootNode(Document, std::move(Node));
				}
			}
			Model.nodes.reserve(Model.nodes.size() + Nodes.Num());
			for (const FNaniteAssemblyNode& Node : Nodes)
			{
				if (Node.PartIndex < 0 || Node.PartIndex >= (int32)Parts.size())
				{
					continue;
				}
				const FGltfTransform Transform = ToGltfTransform(Node.Transform);
				tinygltf::Node& Child = Model.nodes.emplace_back();
				Child.mesh = Parts[Node.PartIndex].Mesh;
				Child.translation = { Transform.Translation.X, Transform.Translation.Y, Transform.Translation.Z };
				Child.rotation = { Transform.Rotation.X, Transform.Rotation.Y, Transform.Rotation.Z, Transform.Rotation.W };
				Child.scale = { Transform.Scale.X, Transform.Scale.Y, Transform.Scale.Z };
				Model.nodes[Instances[Node.PartIndex].Node].children.push_back((int)Model.nodes.size() - 1);
				++Instances[Node.PartIndex].Written;
			}
		}
	}

	void AddGltfMeshNode(FGltfDocument& Document, int32 Mesh, const std::string& Name)
	{
		tinygltf::Node Node;
		Node.name = Name;
		Node.mesh = Mesh;
		AddRootNode(Document, std::move(Node));
	}

	int64 AddGltfInstances(FGltfDocument& Document, const TArray<FNaniteAssemblyNode>& Nodes, const std::vector<FGltfPart>& Parts, bool bInstancing)
	{
		std::vector<FPartInstances> Instances(Parts.size());
		for (const FNaniteAssemblyNode& Node : Nodes)
		{
			if (Node.PartIndex >= 0 && Node.PartIndex < (int32)Parts.size())
			{
				++Instances[Node.PartIndex].Count;
			}
		}
		if (bInstancing)
		{
			AddInstancingNodes(Document, Nodes, Parts, Instances);
		}
		else
		{
			AddInstanceChildNodes(Document, Nodes, Parts, Instances);
		}
		int64 Written = 0;
		for (const FPartInstances& Part : Instances)
		{
			Written += Part.Written;
		}
		return Written;
	}
}
