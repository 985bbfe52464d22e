// In a coverage build of tarn.dll, writes the counts. The runtime would do so in a destructor that the
// library's own start-up code does not call, and the counts of the last objects' destructors would be
// missing.
extern "C" void __gcov_dump();

namespace
{
class CoverageDump
{
public:
    CoverageDump() = default;
    ~CoverageDump() { __gcov_dump(); }
    CoverageDump(const CoverageDump&) = delete;
    CoverageDump& operator=(const CoverageDump&) = delete;
};

// As the last object file of those with this priority, made before the module state, and so the last to
// go.
CoverageDump g_coverageDump __attribute__((init_priority(101)));
} // namespace
