#ifndef TESTS_DIGEST_PARTS_H
#define TESTS_DIGEST_PARTS_H

#include "tests/digest/digest.h"

namespace digest {

// Each adds the results of one part of the library. They share nothing: a difference in one stays there.

void addDecisionRule(Digest& digest);
void addNormalDensities(Digest& digest);
void addDegenerateDensities(Digest& digest);
void addBinomialDensities(Digest& digest);
void addBayesJoint(Digest& digest);
void addBayesIndependent(Digest& digest);
void addBayesMixed(Digest& digest);
void addBayesBinomial(Digest& digest);
void addDistances(Digest& digest);
void addNeighbors(Digest& digest);
void addHostileNeighbors(Digest& digest);
void addTrees(Digest& digest);
void addFeatureScores(Digest& digest);
void addRuleTables(Digest& digest);
void addRandomNumbers(Digest& digest);
void addGenerators(Digest& digest);
void addArchives(Digest& digest);

} // namespace digest

#endif
