#include "Guard.h"

#include <exception>
#include <new>
#include <ostream>

#include "Printable.h"
#include "Request.h"

namespace vxlsync::host
{

ExitCode guarded(const std::function<ExitCode()>& work, std::ostream& err)
{
    try {
        return work();
    } catch (const UsageError& error) {
        err << "vxl-sync: " << error.what() << '\n';
        return ExitCode::usage;
    } catch (const std::bad_alloc&) {
        err << "vxl-sync: memory ran out; give fewer files, a lower --memory or fewer --jobs\n";
    } catch (const std::exception& error) {
        err << "vxl-sync: internal error: " << printable(error.what()) << '\n';
    }
    return ExitCode::internalError;
}

} // namespace vxlsync::host
