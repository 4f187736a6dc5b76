#!/usr/bin/env bash
# The shared library exports its classes and functions, and nothing of the standard library or of its inner pieces.
# usage: exports.sh LIBRARY
set -euo pipefail
symbols=$(nm -DC --defined-only "$1" | cut -d' ' -f2-)
stray=$(grep -E 'std::|__gnu_cxx|anonymous|avl::|vertex_insertion|Float3|VertexCache|HeightSet|FacetIntake|TextScanner|ByteReader|OpenPath|FileSize|Slot\(|WindingParity|FileWindow|LineTokens|WriteFixed|CommandOf' <<<"$symbols" |
    grep -vE 'operator new\(unsigned (long|int), std::nothrow_t const&\)' || true)
if [ -n "$stray" ]; then
    echo "exported, but not part of the interface:"
    echo "$stray"
    exit 1
fi
for name in 'fnVarnet()' nVarnet g_nVectorCount 'CSTLModel::ReadSTLFacetASCII' 'CVertexTree::BalanceLeft' \
    'CFacet::EightClassify' 'CFeatureSurface::IsPrism' 'vtable for CSTLModel' 'vtable for CFacet' g_nCLILayers \
    'CLayerModel::ReadLayerCOC' 'CLayer::ReadCLIFile' 'tagLoopTreeNode::WriteCLILoop'; do
    grep -qF -- "$name" <<<"$symbols" || { echo "not exported: $name"; exit 1; }
done
