// Nothing: a target that precompiles headers for others has to have a source.
