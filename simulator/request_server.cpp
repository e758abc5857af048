#include "simulator/request_server.h"

#include "simulator/file_descriptor.h"

#include <modbus.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace simulator
{

namespace
{

constexpr std::size_t addressOffset = 8;
constexpr std::size_t quantityOffset = 10;
constexpr std::size_t byteCountOffset = 12;
constexpr std::size_t fixedSize = 12; // of every request without values of its own
constexpr int onlyOne = 0;            // maximum of functions that carry a value in place of a quantity

// What Modbus allows of the functions served here.
struct Function {
    int code;
    int maximum;        // quantity
    int bitsPerElement; // of the values that follow the quantity; 0 if none do
};

constexpr Function functions[] = {
    {MODBUS_FC_READ_COILS, MODBUS_MAX_READ_BITS, 0},
    {MODBUS_FC_READ_HOLDING_REGISTERS, MODBUS_MAX_READ_REGISTERS, 0},
    {MODBUS_FC_WRITE_SINGLE_COIL, onlyOne, 0},
    {MODBUS_FC_WRITE_SINGLE_REGISTER, onlyOne, 0},
    {MODBUS_FC_WRITE_MULTIPLE_COILS, MODBUS_MAX_WRITE_BITS, 1},
    {MODBUS_FC_WRITE_MULTIPLE_REGISTERS, MODBUS_MAX_WRITE_REGISTERS, 16},
};

const Function* functionOf(const Bytes& request)
{
    const auto found = std::find_if(std::begin(functions), std::end(functions),
                                    [&](const Function& f) { return f.code == request[functionOffset]; });
    return found == std::end(functions) ? nullptr : found;
}

bool isFrame(const Bytes& request)
{
    return request.size() >= lengthEnd + minimumLength && request.size() <= lengthEnd + maximumLength &&
           get16(request, protocolOffset) == 0 && get16(request, lengthOffset) == request.size() - lengthEnd;
}

int quantityOf(const Function& function, const Bytes& request)
{
    return function.maximum == onlyOne ? 1 : get16(request, quantityOffset);
}

bool hasRightValues(const Function& function, const Bytes& request)
{
    const int bits = quantityOf(function, request) * function.bitsPerElement;
    const std::size_t byteCount = static_cast<std::size_t>((bits + 7) / 8);
    return request.size() == byteCountOffset + 1 + byteCount && request[byteCountOffset] == byteCount;
}

// Sizes first: nothing behind the end of the request is looked at.
bool isWellFormed(const Function& function, const Bytes& request)
{
    if (request.size() < fixedSize)
        return false;
    if (function.maximum != onlyOne) {
        const int quantity = quantityOf(function, request);
        if (quantity < 1 || quantity > function.maximum)
            return false;
    }
    if (function.bitsPerElement != 0)
        return hasRightValues(function, request);
    if (function.code == MODBUS_FC_WRITE_SINGLE_COIL) {
        const int value = get16(request, quantityOffset);
        if (value != 0xFF00 && value != 0)
            return false;
    }
    return request.size() == fixedSize;
}

modbus_mapping_t mappingOf(ControllerMemory::Unit& unit)
{
    modbus_mapping_t mapping{};
    mapping.nb_bits = addressCount;
    mapping.tab_bits = unit.coils.data();
    mapping.nb_registers = addressCount;
    mapping.tab_registers = unit.registers.data();
    return mapping;
}

} // namespace

/// libmodbus with its connection replaced by a pair of sockets: what it sends is read back here.
class RequestServer::Library
{
public:
    Library() : Library(socketPair()) {}
    ~Library() { modbus_free(context_); }
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;

    Bytes reply(const Bytes& request, ControllerMemory::Unit& unit)
    {
        modbus_mapping_t mapping = mappingOf(unit);
        modbus_reply(context_, request.data(), static_cast<int>(request.size()), &mapping);
        return sent();
    }

    Bytes exception(const Bytes& request, unsigned code)
    {
        modbus_reply_exception(context_, request.data(), code);
        Bytes reply = sent();
        if (!reply.empty())
            reply[functionOffset] |= 0x80; // libmodbus adds it, which wraps for functions above 127
        return reply;
    }

private:
    struct Pair {
        int library;
        int own;
    };

    explicit Library(Pair pair)
        : librarySide_(pair.library), ownSide_(pair.own), context_(modbus_new_tcp("127.0.0.1", 0))
    {
        if (!context_)
            throw std::runtime_error("cannot prepare libmodbus: " + std::string(modbus_strerror(errno)));
        modbus_set_socket(context_, pair.library);
        // Before some exceptions libmodbus waits this long for the rest of a damaged request.
        modbus_set_response_timeout(context_, 0, 1);
    }

    // Packets, not a stream: each reply is read as it was sent.
    static Pair socketPair()
    {
        int ends[2];
        if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
            throw std::runtime_error("cannot create a pair of sockets: " + std::string(std::strerror(errno)));
        return {ends[0], ends[1]};
    }

    Bytes sent()
    {
        Bytes reply(MODBUS_TCP_MAX_ADU_LENGTH);
        const ssize_t size = recv(ownSide_.number(), reply.data(), reply.size(), MSG_DONTWAIT);
        reply.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
        return reply;
    }

    FileDescriptor librarySide_;
    FileDescriptor ownSide_;
    modbus_t* context_;
};

RequestServer::RequestServer(ControllerMemory& memory, std::vector<AddressRange> refused)
    : memory_(memory), refused_(std::move(refused)), library_(std::make_unique<Library>())
{
}

RequestServer::~RequestServer() = default;

Bytes RequestServer::answer(const Bytes& request)
{
    if (!isFrame(request))
        return {};
    const int unit = request[unitOffset];
    if (unit == 0)
        executeOnAll(request);
    return answers(unit) ? execute(request, unit) : Bytes();
}

Bytes RequestServer::refuse(const Bytes& request, unsigned exceptionCode)
{
    if (!isFrame(request) || !answers(request[unitOffset]))
        return {};
    const std::lock_guard<std::mutex> lock(mutex_);
    return library_->exception(request, exceptionCode);
}

bool RequestServer::answers(int unit) const
{
    return unit >= firstUnit && unit <= lastUnit && !silent_[static_cast<std::size_t>(unit)];
}

void RequestServer::setSilent(int unit, bool silent)
{
    if (unit >= firstUnit && unit <= lastUnit)
        silent_[static_cast<std::size_t>(unit)] = silent;
}

Bytes RequestServer::execute(const Bytes& request, int unit)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    Bytes reply;
    memory_.use(unit, [&](ControllerMemory::Unit& elements) {
        const unsigned exception = objection(request);
        reply = exception ? library_->exception(request, exception) : library_->reply(request, elements);
    });
    return reply;
}

// A read or a wrong request changes nothing, so only writes come to anything.
void RequestServer::executeOnAll(const Bytes& request)
{
    for (const int unit : memory_.units())
        if (answers(unit))
            execute(request, unit);
}

bool RequestServer::isRefused(int address, int quantity) const
{
    return std::any_of(refused_.begin(), refused_.end(), [&](const AddressRange& range) {
        return address <= range.to && address + quantity > range.from;
    });
}

// The exception to send, or 0. libmodbus is only given what passes, so it never reads past the request.
// Addresses past 65535 are left to it.
unsigned RequestServer::objection(const Bytes& request) const
{
    const Function* const function = functionOf(request);
    if (!function)
        return MODBUS_EXCEPTION_ILLEGAL_FUNCTION;
    if (!isWellFormed(*function, request))
        return MODBUS_EXCEPTION_ILLEGAL_DATA_VALUE;
    if (isRefused(get16(request, addressOffset), quantityOf(*function, request)))
        return MODBUS_EXCEPTION_ILLEGAL_DATA_ADDRESS;
    return 0;
}

} // namespace simulator
