// A shared library with nothing in it: what any loading costs.
