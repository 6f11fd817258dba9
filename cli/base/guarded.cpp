#include "base/guarded.h"

#include "base/console.h"
#include "base/failure.h"

#include <exception>
#include <new>

int guarded(const std::function<int()>& command) {
    try {
        return command();
    } catch (const Failure& failure) {
        complain(failure.what());
        return static_cast<int>(failure.code);
    } catch (const std::bad_alloc&) {
        complain(kMemoryMessage);
        return static_cast<int>(Exit::tooLarge);
    } catch (const std::exception& error) {
        complain(error.what());
        return static_cast<int>(Exit::failed);
    }
}
