// An empty shared library, for the cost of any load.
