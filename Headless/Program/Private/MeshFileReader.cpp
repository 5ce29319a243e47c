#include "Headless/MeshFileReader.h"

#include "Headless/MaterialSlotNames.h"
#include "Headless/StringUtils.h"
#include "Headless/YUpFrame.h"
#include "Misc/CoreMiscDefines.h"
#include "UObject/NameTypes.h"

#include <assimp/Importer.hpp>
#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <string>
#include <unordered_map>
#include <vector>

namespace UE::Headless
{
	namespace
	{
		enum class EFileKind
		{
			Gltf,
			Obj,
			Fbx,
			Other,
		};

		EFileKind GetFileKind(const FString& Filename)
		{
			std::string Extension = std::filesystem::path(ToUtf8(Filename)).extension().string();
			std::transform(Extension.begin(), Extension.end(), Extension.begin(), [](unsigned char Char) { return (char)std::tolower(Char); });
			if (Extension == ".gltf" || Extension == ".glb")
			{
				return EFileKind::Gltf;
			}
			if (Extension == ".obj")
			{
				return EFileKind::Obj;
			}
			return Extension == ".fbx" ? EFileKind::Fbx : EFileKind::Other;
		}

		using FVector3Double = std::array<double, 3>;

		// An affine transform in double precision: three rows of a linear part and a translation.
		struct FAffine
		{
			double M[3][4] = { { 1, 0, 0, 0 }, { 0, 1, 0, 0 }, { 0, 0, 1, 0 } };

			static FAffine FromAssimp(const aiMatrix4x4& Matrix)
			{
				FAffine Result;
				const ai_real* Rows[3] = { Matrix[0], Matrix[1], Matrix[2] };
				for (int Row = 0; Row < 3; ++Row)
				{
					for (int Column = 0; Column < 4; ++Column)
					{
						Result.M[Row][Column] = Rows[Row][Column];
					}
				}
				return Result;
			}

			FAffine operator*(const FAffine& Other) const
			{
				FAffine Result;
				for (int Row = 0; Row < 3; ++Row)
				{
					for (int Column = 0; Column < 4; ++Column)
					{
						double Sum = Column == 3 ? M[Row][3] : 0.0;
						for (int Inner = 0; Inner < 3; ++Inner)
						{
							Sum += M[Row][Inner] * Other.M[Inner][Column];
						}
						Result.M[Row][Column] = Sum;
					}
				}
				return Result;
			}

			double Determinant() const
			{
				return M[0][0] * (M[1][1] * M[2][2] - M[1][2] * M[2][1]) - M[0][1] * (M[1][0] * M[2][2] - M[1][2] * M[2][0])
					+ M[0][2] * (M[1][0] * M[2][1] - M[1][1] * M[2][0]);
			}

			FVector3Double TransformPoint(const aiVector3D& Point) const
			{
				FVector3Double Result;
				for (int Row = 0; Row < 3; ++Row)
				{
					Result[Row] = M[Row][0] * Point.x + M[Row][1] * Point.y + M[Row][2] * Point.z + M[Row][3];
				}
				return Result;
			}

			// Normals go through the inverse transpose of the linear part: its cofactors, divided by the
			// determinant, whose size the normalisation after it drops and whose sign it keeps.
			FAffine GetNormalTransform() const
			{
				const double Sign = Determinant() < 0.0 ? -1.0 : 1.0;
				FAffine Result;
				for (int Row = 0; Row < 3; ++Row)
				{
					for (int Column = 0; Column < 3; ++Column)
					{
						const int Row1 = (Row + 1) % 3;
						const int Row2 = (Row + 2) % 3;
						const int Column1 = (Column + 1) % 3;
						const int Column2 = (Column + 2) % 3;
						Result.M[Row][Column] = Sign * (M[Row1][Column1] * M[Row2][Column2] - M[Row1][Column2] * M[Row2][Column1]);
					}
					Result.M[Row][3] = 0.0;
				}
				return Result;
			}
		};

		// The file's axes and units against the Y-up, right-handed frame of glTF, from which the shared change of
		// frame leads to the engine's.
		struct FFileFrame
		{
			// From the file's axes to glTF's.
			FAffine Axes;
			double CentimetresPerUnit = 1.0;
		};

		bool GetMetadataNumber(const aiScene& Scene, const char* Key, double& OutValue)
		{
			const aiMetadata* Metadata = Scene.mMetaData;
			for (unsigned Index = 0; Metadata && Index < Metadata->mNumProperties; ++Index)
			{
				if (std::strcmp(Metadata->mKeys[Index].C_Str(), Key) != 0)
				{
					continue;
				}
				const aiMetadataEntry& Entry = Metadata->mValues[Index];
				switch (Entry.mType)
				{
				case AI_INT32:
					OutValue = *static_cast<const int32_t*>(Entry.mData);
					return true;
				case AI_FLOAT:
					OutValue = *static_cast<const float*>(Entry.mData);
					return true;
				case AI_DOUBLE:
					OutValue = *static_cast<const double*>(Entry.mData);
					return true;
				default:
					return false;
				}
			}
			return false;
		}

		// An FBX file says which of its axes points up, which to the front and which to the side (FBX's
		// "coord" axis), each with a sign; glTF's are +Y, +Z and +X. A file whose axis settings are missing or
		// do not name three different axes is taken as Y-up like glTF. Its unit is UnitScaleFactor centimetres,
		// one centimetre when it says nothing usable.
		FFileFrame GetFbxFrame(const aiScene& Scene)
		{
			FFileFrame Frame;
			double Unit = 0.0;
			if (GetMetadataNumber(Scene, "UnitScaleFactor", Unit) && std::isfinite(Unit) && Unit > 0.0)
			{
				Frame.CentimetresPerUnit = Unit;
			}
			const char* const AxisKeys[3][2] = { { "CoordAxis", "CoordAxisSign" }, { "UpAxis", "UpAxisSign" }, { "FrontAxis", "FrontAxisSign" } };
			FAffine Axes;
			bool bAxisUsed[3] = { false, false, false };
			for (int GltfAxis = 0; GltfAxis < 3; ++GltfAxis)
			{
				double FileAxis = -1.0;
				double Sign = 0.0;
				if (!GetMetadataNumber(Scene, AxisKeys[GltfAxis][0], FileAxis) || !GetMetadataNumber(Scene, AxisKeys[GltfAxis][1], Sign))
				{
					return Frame;
				}
				const int Axis = (int)FileAxis;
				if ((double)Axis != FileAxis || Axis < 0 || Axis > 2 || bAxisUsed[Axis] || (Sign != 1.0 && Sign != -1.0))
				{
					return Frame;
				}
				bAxisUsed[Axis] = true;
				for (int Column = 0; Column < 3; ++Column)
				{
					Axes.M[GltfAxis][Column] = Column == Axis ? Sign : 0.0;
				}
			}
			Frame.Axes = Axes;
			return Frame;
		}

		// glTF is in metres; OBJ has no unit, and one of its units is taken as one centimetre, as the engine's own
		// OBJ import takes it. Both are Y-up and right-handed.
		FFileFrame GetFileFrame(const aiScene& Scene, EFileKind Kind)
		{
			if (Kind == EFileKind::Fbx)
			{
				return GetFbxFrame(Scene);
			}
			FFileFrame Frame;
			Frame.CentimetresPerUnit = Kind == EFileKind::Gltf ? CentimetresPerMetre : 1.0;
			return Frame;
		}

		// The change from glTF's frame, in the file's unit, to the engine's, taken from the shared conversion of a
		// point: each of glTF's axes one metre long, scaled to the file's unit.
		FAffine GetChangeToEngineFrame(double CentimetresPerUnit)
		{
			FAffine Change;
			const FVector3f Columns[3] = { FromYUpPoint(FVector3f(1, 0, 0)), FromYUpPoint(FVector3f(0, 1, 0)), FromYUpPoint(FVector3f(0, 0, 1)) };
			for (int Column = 0; Column < 3; ++Column)
			{
				const float Values[3] = { Columns[Column].X, Columns[Column].Y, Columns[Column].Z };
				for (int Row = 0; Row < 3; ++Row)
				{
					Change.M[Row][Column] = Values[Row] / CentimetresPerMetre * CentimetresPerUnit;
				}
			}
			return Change;
		}

		struct FMeshInstance
		{
			unsigned MeshIndex = 0;
			// From the mesh's coordinates to glTF's frame in the file's unit.
			FAffine Transform;
		};

		// Every mesh of every node, depth first in the file's order of nodes, each with its node's transform
		// from the root.
		std::vector<FMeshInstance> CollectMeshInstances(const aiScene& Scene, const FAffine& FileAxes)
		{
			std::vector<FMeshInstance> Instances;
			std::vector<std::pair<const aiNode*, FAffine>> Pending;
			Pending.emplace_back(Scene.mRootNode, FileAxes * FAffine::FromAssimp(Scene.mRootNode->mTransformation));
			while (!Pending.empty())
			{
				const auto [Node, Transform] = Pending.back();
				Pending.pop_back();
				for (unsigned Index = 0; Index < Node->mNumMeshes; ++Index)
				{
					if (Node->mMeshes[Index] < Scene.mNumMeshes && Scene.mMeshes[Node->mMeshes[Index]])
					{
						Instances.push_back({ Node->mMeshes[Index], Transform });
					}
				}
				for (unsigned Child = Node->mNumChildren; Child-- > 0;)
				{
					if (const aiNode* ChildNode = Node->mChildren[Child])
					{
						Pending.emplace_back(ChildNode, Transform * FAffine::FromAssimp(ChildNode->mTransformation));
					}
				}
			}
			return Instances;
		}

		// A mesh of triangles (after sorting by primitive type a mesh holds one type, perhaps flagged as coming from
		// polygons) with a material.
		bool IsDrawn(const aiScene& Scene, const aiMesh& Mesh)
		{
			const unsigned OtherTypes = aiPrimitiveType_POINT | aiPrimitiveType_LINE | aiPrimitiveType_POLYGON;
			return (Mesh.mPrimitiveTypes & aiPrimitiveType_TRIANGLE) != 0 && (Mesh.mPrimitiveTypes & OtherTypes) == 0 && Mesh.mNumFaces > 0 && Mesh.mVertices
				&& Mesh.mMaterialIndex < Scene.mNumMaterials;
		}

		// Slot names as the engine gives them to imported materials: the characters an object name may not hold
		// become '_', an FName's length is kept, and a material without a name is named after its slot.
		FName MakeSlotName(const aiMaterial& Material, int32 Slot)
		{
			constexpr int32 MaxNameLength = 1023;
			aiString SourceName;
			Material.Get(AI_MATKEY_NAME, SourceName);
			FString Name = FromUtf8(std::string_view(SourceName.C_Str(), SourceName.length));
			if (Name.IsEmpty())
			{
				Name = FString::Printf(TEXT("Material_%d"), Slot);
			}
			FString Clean;
			for (int32 Index = 0; Index < Name.Len() && Index < MaxNameLength; ++Index)
			{
				const TCHAR Char = Name[Index];
				bool bInvalid = Char < 0x20;
				for (const TCHAR* Invalid = INVALID_OBJECTNAME_CHARACTERS; *Invalid && !bInvalid; ++Invalid)
				{
					bInvalid = Char == *Invalid;
				}
				Clean.AppendChar(bInvalid ? TEXT('_') : Char);
			}
			return FName(*Clean);
		}

		// One corner of a triangle: the source vertex and the normal it is drawn with, which for a vertex
		// without a usable normal of its own is its triangle's.
		struct FCornerKey
		{
			unsigned Vertex = 0;
			uint32_t NormalBits[3] = { 0, 0, 0 };

			bool operator==(const FCornerKey& Other) const
			{
				return Vertex == Other.Vertex && std::memcmp(NormalBits, Other.NormalBits, sizeof(NormalBits)) == 0;
			}
		};

		struct FCornerKeyHash
		{
			size_t operator()(const FCornerKey& Key) const
			{
				size_t Hash = Key.Vertex;
				for (const uint32_t Bits : Key.NormalBits)
				{
					Hash = Hash * 1000003u ^ Bits;
				}
				return Hash;
			}
		};

		FVector3f ToFloat(const FVector3Double& Vector)
		{
			return FVector3f((float)Vector[0], (float)Vector[1], (float)Vector[2]);
		}

		bool IsFinite(const FVector3f& Vector)
		{
			return std::isfinite(Vector.X) && std::isfinite(Vector.Y) && std::isfinite(Vector.Z);
		}

		// The vector scaled to unit length in double precision, so that the smallest real triangle still has a
		// direction; zero for a zero vector.
		FVector3f GetUnit(const FVector3f& Vector)
		{
			const double Length = std::sqrt((double)Vector.X * Vector.X + (double)Vector.Y * Vector.Y + (double)Vector.Z * Vector.Z);
			// Adding zero turns -0 into 0, so that equal directions have equal bits.
			return Length > 0.0 ? FVector3f((float)(Vector.X / Length) + 0.0f, (float)(Vector.Y / Length) + 0.0f, (float)(Vector.Z / Length) + 0.0f) : FVector3f(0.0f);
		}

		class FSceneMerger
		{
		public:
			FSceneMerger(FStaticMeshGeometry& InGeometry, int32 NumSlots)
				: Geometry(InGeometry)
				, TrianglesBySlot(NumSlots)
			{
			}

			// False when a position is not a finite number.
			bool AddInstance(const aiMesh& Mesh, const FMeshInstance& Instance, const FAffine& ToEngine, int32 Slot)
			{
				const FAffine ToEngineHere = ToEngine * Instance.Transform;
				const FAffine NormalTransform = Instance.Transform.GetNormalTransform();
				std::vector<FVector3f> Positions(Mesh.mNumVertices);
				// A vertex without a usable normal of its own (none, zero or not finite) is left zero here and
				// drawn with its triangle's.
				std::vector<FVector3f> Normals(Mesh.mNumVertices, FVector3f(0.0f));
				for (unsigned Vertex = 0; Vertex < Mesh.mNumVertices; ++Vertex)
				{
					Positions[Vertex] = ToFloat(ToEngineHere.TransformPoint(Mesh.mVertices[Vertex]));
					if (!IsFinite(Positions[Vertex]))
					{
						return false;
					}
					if (Mesh.mNormals)
					{
						const FVector3f Normal = GetUnit(SwapYUpAxes(ToFloat(NormalTransform.TransformPoint(Mesh.mNormals[Vertex]))));
						Normals[Vertex] = IsFinite(Normal) ? Normal : FVector3f(0.0f);
					}
				}
				// A mirroring transform turns the faces inside out unless the corners change their order.
				const bool bMirrored = Instance.Transform.Determinant() < 0.0;
				std::unordered_map<FCornerKey, int32, FCornerKeyHash> Corners;
				for (unsigned Face = 0; Face < Mesh.mNumFaces; ++Face)
				{
					const aiFace& Source = Mesh.mFaces[Face];
					if (Source.mNumIndices != 3 || Source.mIndices[0] >= Mesh.mNumVertices || Source.mIndices[1] >= Mesh.mNumVertices
						|| Source.mIndices[2] >= Mesh.mNumVertices)
					{
						continue;
					}
					const unsigned Indices[3] = { Source.mIndices[0], bMirrored ? Source.mIndices[2] : Source.mIndices[1], bMirrored ? Source.mIndices[1] : Source.mIndices[2] };
					const FVector3f& A = Positions[Indices[0]];
					const FVector3f& B = Positions[Indices[1]];
					const FVector3f& C = Positions[Indices[2]];
					const FVector3f FaceNormal = GetUnit((C - A) ^ (B - A));
					if (FaceNormal.IsZero())
					{
						continue;
					}
					FMeshTriangle Triangle;
					Triangle.PolygonGroup = Slot;
					for (int Corner = 0; Corner < 3; ++Corner)
					{
						const unsigned Vertex = Indices[Corner];
						Triangle.VertexIndices[Corner] = AddCorner(Mesh, Vertex, Positions[Vertex], Normals[Vertex].IsZero() ? FaceNormal : Normals[Vertex], Corners);
					}
					TrianglesBySlot[Slot].push_back(Triangle);
				}
				return true;
			}

			// The triangles, slot by slot.
			void Finish()
			{
				for (const std::vector<FMeshTriangle>& Triangles : TrianglesBySlot)
				{
					for (const FMeshTriangle& Triangle : Triangles)
					{
						Geometry.Triangles.Add(Triangle);
					}
				}
			}

		private:
			int32 AddCorner(const aiMesh& Mesh, unsigned Vertex, const FVector3f& Position, const FVector3f& Normal,
				std::unordered_map<FCornerKey, int32, FCornerKeyHash>& Corners)
			{
				FCornerKey Key;
				Key.Vertex = Vertex;
				std::memcpy(Key.NormalBits, &Normal.X, sizeof(float));
				std::memcpy(Key.NormalBits + 1, &Normal.Y, sizeof(float));
				std::memcpy(Key.NormalBits + 2, &Normal.Z, sizeof(float));
				const auto [Found, bAdded] = Corners.try_emplace(Key, Geometry.Positions.Num());
				if (bAdded)
				{
					FVector2f UV(0.0f, 0.0f);
					if (Mesh.mTextureCoords[0])
					{
						const aiVector3D& Source = Mesh.mTextureCoords[0][Vertex];
						UV = FVector2f(std::isfinite(Source.x) ? Source.x : 0.0f, std::isfinite(Source.y) ? Source.y : 0.0f);
					}
					Geometry.Positions.Add(Position);
					Geometry.Normals.Add(Normal);
					Geometry.UVs.Add(UV);
				}
				return Found->second;
			}

			FStaticMeshGeometry& Geometry;
			std::vector<std::vector<FMeshTriangle>> TrianglesBySlot;
		};

		bool Refuse(const FString& Filename, const FString& Reason, FString& OutError)
		{
			OutError = FString::Printf(TEXT("cannot import '%s': %s"), *Filename, *Reason);
			return false;
		}
	}

	bool ReadMeshFile(const FString& Filename, FStaticMeshGeometry& OutGeometry, FString& OutError)
	{
		const EFileKind Kind = GetFileKind(Filename);
		if (Kind == EFileKind::Other)
		{
			return Refuse(Filename, TEXT("only .gltf, .glb, .obj and .fbx files can be imported"), OutError);
		}
		std::error_code FileError;
		if (!std::filesystem::is_regular_file(ToUtf8(Filename), FileError))
		{
			return Refuse(Filename, std::filesystem::exists(ToUtf8(Filename), FileError) ? TEXT("it is not a file") : TEXT("no such file"), OutError);
		}

		Assimp::Importer Importer;
		// Points and lines come apart from triangles, to be left out below; a scene of nothing else is refused
		// with that said rather than with the words of a validation step. The engine's texture space starts at the
		// top left, as glTF's does; assimp's at the bottom left.
		const unsigned Steps = aiProcess_Triangulate | aiProcess_SortByPType | aiProcess_JoinIdenticalVertices | aiProcess_FlipUVs;
		const aiScene* Scene = Importer.ReadFile(ToUtf8(Filename), Steps);
		if (!Scene || !Scene->mRootNode)
		{
			const char* Reason = Importer.GetErrorString();
			return Refuse(Filename, FromUtf8(Reason && *Reason ? Reason : "the importer could not read it"), OutError);
		}

		const FFileFrame Frame = GetFileFrame(*Scene, Kind);
		const std::vector<FMeshInstance> Instances = CollectMeshInstances(*Scene, Frame.Axes);
		// Slots in the file's order of materials, for the materials that a drawn mesh uses.
		std::vector<int32> SlotOfMaterial(Scene->mNumMaterials, INDEX_NONE);
		for (const FMeshInstance& Instance : Instances)
		{
			const aiMesh& Mesh = *Scene->mMeshes[Instance.MeshIndex];
			if (IsDrawn(*Scene, Mesh))
			{
				SlotOfMaterial[Mesh.mMaterialIndex] = 0;
			}
		}
		FStaticMeshGeometry Geometry;
		for (unsigned Material = 0; Material < Scene->mNumMaterials; ++Material)
		{
			if (SlotOfMaterial[Material] != INDEX_NONE)
			{
				SlotOfMaterial[Material] = Geometry.PolygonGroupSlotNames.Num();
				Geometry.PolygonGroupSlotNames.Add(MakeSlotName(*Scene->mMaterials[Material], SlotOfMaterial[Material]));
			}
		}

		const FAffine ToEngine = GetChangeToEngineFrame(Frame.CentimetresPerUnit);
		FSceneMerger Merger(Geometry, Geometry.PolygonGroupSlotNames.Num());
		for (const FMeshInstance& Instance : Instances)
		{
			const aiMesh& Mesh = *Scene->mMeshes[Instance.MeshIndex];
			if (!IsDrawn(*Scene, Mesh))
			{
				continue;
			}
			if (!Merger.AddInstance(Mesh, Instance, ToEngine, SlotOfMaterial[Mesh.mMaterialIndex]))
			{
				return Refuse(Filename, TEXT("a vertex position is not a finite number"), OutError);
			}
		}
		Merger.Finish();
		if (Geometry.Triangles.IsEmpty())
		{
			return Refuse(Filename, TEXT("it holds no triangles"), OutError);
		}

		// A slot whose triangles all lacked area stays, as the engine keeps a material without sections.
		MakeSlotNamesUnique(Geometry.PolygonGroupSlotNames);
		for (int32 Slot = 0; Slot < Geometry.PolygonGroupSlotNames.Num(); ++Slot)
		{
			Geometry.SectionMaterialIndices.Add(Slot);
		}
		Geometry.NumSourceModels = 1;
		Geometry.bHasMeshDescription = true;
		OutGeometry = MoveTemp(Geometry);
		return true;
	}
}
