#include "writers/writer_plugins.h"
