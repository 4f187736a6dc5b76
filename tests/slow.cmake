# Tests that take about a second or more on an idle machine: ./dev quick leaves them out. ctest reads this behind the
# tests that it finds in the programs; a name that is no test any more is passed over.
set(slow
    BinaryLayer.LoopsOfManyBlocksAreReadWhole
    FileFaults.EveryReaderTakesItsFilesCutAtEveryByteAndOthersAtMany
    Fill.StrokesLieWhereALookAtEachPointSays
    FixNormal.LargeShellWithAnEdgeOfThreeFacetsDoesNotExhaustTheStack
    Heal.FacetsBesideTJunctionsAreDivided
    Heal.NoInputMakesMoreOpenEdges
    LargeFiles.AnStlBeyondTwoGigabytesIsReadToItsEnd
    LargeFiles.SlicesOfMoreThanTwoGigabytesAreWritten
    LiteralSlices.LayersAreWrittenTheSameWayInAllModesAndReadBack
    MakeTopology.AgreesWithThePairwiseWalkOnRandomLayers
    Oltp.FileCutShortDeliversWhatItHas
    ReadPart.BytesThatAreBrokenGiveAPartOrAnError
    ReadPart.ProgressNeverFallsAndStopsTheRead
    Repair.NoInputMakesMoreOpenEdges
    Resolve.ManyCirclesNestLikeASlowCount
    RingStream.EveryMeshIsWrittenAsTheStepsSay
    RingStream.ShuffledMeshesAreWrittenAsTheStepsSay
    SliceFileTest.AFileCutAtAnyByteGivesTheLayersBefore
    SliceFileTest.BytesByChanceGiveAnErrorOrALayer
    StripReader.EveryFlippedBitIsReadOrRefused
    StripReader.WrittenAndReadAgainTheMeshIsTheQuantisedOne
    Thin.NoPointThatGoesIsFurtherThanTheTolerance
    VertexCache.RowBetweenTwoOthersGivesTheSameNodesAsTheTree)
foreach(test ${slow})
    set_tests_properties(${test} PROPERTIES LABELS slow)
endforeach()
foreach(shape 0 1 2 3 4 5 6 7)
    set_tests_properties(All/IntakeShapes.GiveTheSameModelAsSingleFacetsInAnyOrder/${shape} PROPERTIES LABELS slow)
endforeach()
