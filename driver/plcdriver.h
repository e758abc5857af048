/// \file
/// \brief The one header that a runtime includes: records, entry points, utilities, result codes.
///
/// The driver does no input or output. The runtime's communication thread asks for the next frame
/// (ComCommunication()), sends its bytes, and hands whatever came back to DataCom(). Any thread may queue
/// writes and one-shot reads, switch stations off and on, and read or write registers meanwhile.
///
/// The records cross the boundary between two separately built modules. On the product platform (32-bit,
/// little-endian) their layout is fixed and checked below at compile time; QString, QByteArray and QList
/// are one-pointer handles, so runtime and driver must use the same QtCore (4.8 or 5, not 6).
///
/// Wiring (SetComInfo(), RegistCallBackFuncIntf(), FlashLocalRegister()) is done by one thread before the
/// others start. No entry point throws. A null record, list, string or byte array is refused: nothing
/// changes and the result is the one given for it.
#ifndef PLCDRIVER_H
#define PLCDRIVER_H

#include <QByteArray>
#include <QList>
#include <QString>

#include <cstddef>

#define PLCDRIVER_API __attribute__((visibility("default")))

/// \name Result codes
/// What RW_VAR::result of the record returned by DataCom() says. A failure is one of the six bases plus a
/// fine offset that tells which of the runtime's variables failed: base + 1 + hostKey for a hostKey of
/// 1..11, base + 1 for any other.
/// @{
enum PLC_RESULT {
    PLC_RETRYING = 0,             ///< failed; the same frame is handed out again, nothing is lost yet
    PLC_DONE = 1,                 ///< good reply, filed where the request asks for it
    PLC_LOCAL_CHECK = 10,         ///< 11..22: local reply refused by the data check (reserved)
    PLC_LOCAL_NO_REPLY = 40,      ///< 41..52: no reply to a local request
    PLC_LOCAL_LENGTH = 70,        ///< 71..82: local reply of the wrong length (a Modbus exception is one)
    PLC_REMOTE_DONE = 100,        ///< good remote reply that was not filed, or second frame of a request
    PLC_REMOTE_CHECK = 110,       ///< 111..122: remote reply refused by the data check (reserved)
    PLC_REMOTE_NO_REPLY = 140,    ///< 141..152: no reply to a remote request
    PLC_REMOTE_LENGTH = 170,      ///< 171..182: remote reply of the wrong length
    PLC_UNKNOWN_OUTCOME = 200     ///< no case of the above
};
/// @}

/// One variable request: 60 bytes on the product platform. The driver copies it by value into its lists.
///
/// Area codes: 0..7 bit areas, 8 a bit inside a 16-bit word of area 9, 9..13 word areas, 14 the area of
/// 32-bit double words.
struct RW_VAR {
    int hostKey;        ///< the runtime's identifier; 1..11 also selects the fine part of an error code
    int hostSubKey;     ///< second identifier; a one-shot read is reported once per pair of both
    int accessFlag;     ///< 0: data of a good reply is filed into the image; else judged only
    int spare3;         ///< carried through; requests of the rebuilt read list hold COMINFO::remoteMode
    int stationGroup;   ///< equal to COMINFO::localStation: local reply handling, else remote
    int result;         ///< result code; meaningful in the record that DataCom() returns
    QString name;       ///< carried through
    QString name2;      ///< the address text where an entry point takes one; carried through
    int area;           ///< area code, 0..14
    int address;        ///< element within the area; frames carry its low 16 bits
    int station;        ///< station number, the Modbus unit identifier; 0 is broadcast
    int count;          ///< number of elements
    int storeSelector;  ///< -1: reply filed in a special way (read-before-write; remote data to be filed)
    int spare13;        ///< carried through
    QByteArray data;    ///< value bytes, little-endian, one byte per bit; empty in the result record
};

/// One finished request frame: 92 bytes on the product platform. Owned by the driver; the runtime reads
/// it between ComCommunication() and DataCom().
struct Protocol {
    QByteArray frame;   ///< the bytes to send
    int frameLength;    ///< bytes in frame
    int replyLength;    ///< bytes of the reply; -1 any, 0 none is expected (broadcast)
    int dataOffset;     ///< first data byte in the reply
    int dataLength;     ///< data bytes in the reply
    RW_VAR var;         ///< the request that the frame was built for
    int extra0;         ///< 0
    int extra1;         ///< 0
    int extra2;         ///< 0
};

/// The runtime's settings block: 76 bytes, owned by the runtime, which must keep it alive as long as the
/// driver is used. Words that only the driver writes may be read by the communication thread.
struct COMINFO {
    int host0[4];        ///< the runtime's
    int maxBlockCount;   ///< most elements of one request, in words; bit areas allow eight times as many
    int host20;          ///< the runtime's
    int defaultStation;  ///< station of every variable while multiStation is 0
    int retryLimit;      ///< consecutive failures that are retried; one more is final
    int failCount;       ///< driver: consecutive failures; only a final failure clears it
    int multiStation;    ///< 0: one station, values in the image; else values are kept per station
    int host40;          ///< the runtime's; SetComInfo() clears it
    int framesExpected;  ///< driver: replies that make up the request in flight
    int framesReceived;  ///< driver: replies received for it
    int host52;          ///< the runtime's; SetComInfo() clears it
    int remoteMode;      ///< non-zero: remote frames for every request; 0: Modbus TCP
    int localStation;    ///< the station group that is served directly
    int hostWriteMode;   ///< 2: SetRegisterData() queues writes; else it changes the driver's memory only
    int cycleDone;       ///< driver: 1 when nothing was to send or a pass of the read list is answered
    int portId;          ///< first argument of the one-shot-read callback
};

/// One cyclically refreshed variable, handed over in a list to ReCreatReadVarList(); 20 bytes on the
/// product platform. The driver only reads it.
struct HOST_VAR {
    signed char host0;      ///< the runtime's
    unsigned char area;     ///< area code, 0..14
    unsigned char station;  ///< station number; used in multi-station mode only
    signed char host3;      ///< the runtime's
    int host4;              ///< the runtime's
    QString address;        ///< address text, as PLCAddressChangeIntef() takes it
    QString name;           ///< copied into RW_VAR::name
    int count;              ///< number of elements
};

/// Called with the driver's list lock held: it MUST NOT call an entry point that queues, rebuilds or
/// polls. \a status is 1 when every piece of the one-shot read was answered, 2 after a final failure.
/// The result is ignored.
typedef int (*OnceReadDoneCallback)(int portId, int hostKey, int hostSubKey, int status);

/// Called with the driver's list lock held (see above) when the frames of a write were built, and after a
/// final failure. \a list is empty and belongs to the driver; \a flag is 1. The result is ignored.
typedef int (*ListDoneCallback)(QList<RW_VAR>* list, int hostKey, int flag);

extern "C" {

/// \name Wiring: one thread, before any other use
/// @{

/// The runtime's own three pointers, as FlashLocalRegister() stored them. The driver never reads them.
extern PLCDRIVER_API void* LB;
extern PLCDRIVER_API void* LW;
extern PLCDRIVER_API void* RWI;

/// Registers the settings block and clears its words at offsets 40 and 52. Null unwires the driver: with
/// no block nothing is sent, queued by address text, read or rebuilt.
PLCDRIVER_API void SetComInfo(COMINFO* info);

/// Registers the two callbacks; a null one is skipped. They run on the thread whose call caused them.
PLCDRIVER_API void RegistCallBackFuncIntf(OnceReadDoneCallback onceReadDone, ListDoneCallback listDone);

/// Stores three pointers of the runtime in LB, LW and RWI, in that order.
PLCDRIVER_API void FlashLocalRegister(void* first, void* second, void* third);

/// \return always 1. Any thread.
PLCDRIVER_API int QueryFinishFlag();
/// @}

/// \name Request cycle: the communication thread
/// @{

/// Chooses the next request and returns its frame: writes first, then one-shot reads (each at most five in
/// a row), then the cyclic reads in turn. While a frame is unanswered the same pointer is returned.
/// \return the frame to send, valid until DataCom() handled its reply; null when there is nothing to send.
PLCDRIVER_API Protocol* ComCommunication();

/// Judges the reply to the frame that ComCommunication() returned last, files its data, and finishes,
/// retries or gives up the request. MUST be called once for every frame sent. Only the length is judged:
/// the runtime MUST see to it that the reply belongs to the frame.
/// \param reply  the bytes received; null is judged like an empty array
/// \param length number of bytes received, 0 when nothing arrived in time
/// \return the driver's result record, never null, overwritten by the next call: identity of the request
///         last finished and a result code; its data is always empty. Result 1 when nothing was outstanding.
PLCDRIVER_API RW_VAR* DataCom(QByteArray* reply, int length);
/// @}

/// \name Variable lists
/// @{

/// The element number that an address text means.
/// \param area area code
/// \param text areas 0 and 1 octal; 2..6 and 9..13 decimal; 7 decimal from 8000 on (element 0); 8 two
///             decimal numbers "word.bit"; 14 decimal from 200 on (element 0)
/// \return the element; -1 (or another negative number, for a text with a sign) when the text names none;
///         0 for an area code outside 0..14. Any thread, no lock.
PLCDRIVER_API int PLCAddressChangeIntef(int area, QString text);

/// Appends a copy of \a var to the cyclic read list. Takes no lock: MUST NOT be called while another
/// thread is inside the driver.
/// \return entries in the read list, also for null
PLCDRIVER_API int AddListReadVar(RW_VAR* var);

/// Queues a write. A queued write to the same station, area, address and count is replaced in its place,
/// unless it is at the head (it may be on its way). At 1024 entries a new write is dropped. Any thread.
/// \param direct 1: append without search or limit
/// \return entries in the write list, also for null
PLCDRIVER_API int AddListWriteVar(RW_VAR* var, int direct);

/// Queues a one-shot read of \a var, split into requests of at most COMINFO::maxBlockCount words (bit areas:
/// eight times as many elements). Pieces that are already queued are skipped; at 1024 entries new ones are
/// dropped. The address comes from RW_VAR::name2; the caller's record is changed (area, address, station,
/// count, storeSelector, spare13). Any thread.
///
/// Area 8 becomes a read of the words that the bits span, and always starts at word 1: read area 9
/// instead. A read of area 14 fetches one element less than its count.
/// \param direct 1: append the record unchanged, without parsing, search or limit
/// \return entries in the one-shot list; 0 when the address text or the area is refused, and for null
PLCDRIVER_API int AddListOnceReadVar(RW_VAR* var, int direct);

/// Replaces the cyclic read list: variables of one area (and, in multi-station mode, one station) that fit
/// into one block are read together. Variables whose text names no element are skipped. Any thread.
/// \return entries in the new list in multi-station mode; always 0 in single-station mode, for an empty
///         list and for null
PLCDRIVER_API int ReCreatReadVarList(QList<HOST_VAR>* list);
/// @}

/// \name Stations: any thread
/// @{

/// Switches communication with a station off (\a flag 0) or on (\a flag 1); any other flag does nothing. A
/// negative \a station switches every station on. Cyclic reads of a switched-off station are skipped, its
/// writes and one-shot reads are discarded when their turn comes.
PLCDRIVER_API void EnCommStation(int station, int flag);
/// @}

/// \name Registers: any thread
/// @{

/// Writes values. With COMINFO::hostWriteMode 2 the write is queued for the controller: bits one request
/// each, words and double words in blocks of COMINFO::maxBlockCount; with any other mode only the
/// driver's memory changes.
/// \param name       carried through in RW_VAR::name
/// \param area       1..14
/// \param address    address text, as PLCAddressChangeIntef() takes it
/// \param station    used in multi-station mode; else COMINFO::defaultStation
/// \param data       value bytes: one per bit, words and double words little-endian; 0 beyond the end
/// \param count      elements; for a queued write of area 14 the number of 16-bit words
/// \param hostKey    \param hostSubKey identity of the request in callbacks and result records
/// \return 0 when the address text or the area is refused or there is nothing to write; 1 when only the
///         driver's memory was written; else entries in the write list after the last piece
PLCDRIVER_API int SetRegisterData(QString* name, int area, QString* address, unsigned int station,
                                  QByteArray* data, int count, int hostKey, unsigned int hostSubKey);

/// Reads values from the driver's memory; no frame is sent.
/// \param out   receives the bytes: one per bit, words and double words little-endian; zero for elements
///              beyond the area. Left as it was when the result is 0.
/// \param count elements. Area 14: n+1 for n double words; 1 gives the low half of the element after
///              the address (in multi-station mode of the element itself).
/// \return 0 when the address text names no element, and for null; 1 otherwise
PLCDRIVER_API unsigned int GetRegisterData(int unused, int area, QString* address, int station,
                                           QByteArray* out, int count);
/// @}

/// \name Checksums and digits: stateless, any thread
/// \a buffer holds \a length bytes; a null one gives 0 unless its length of 0 says that it is not read.
/// @{

/// \return the sum of the bytes modulo 65536
PLCDRIVER_API unsigned short CalSUM(const unsigned char* buffer, unsigned short length);

/// CRC-16 as Modbus over Serial Line, section 6.2.2, defines it: start 0xFFFF, polynomial 0xA001
/// (reflected).
/// \return the check value, low byte to be sent first; 0xFFFF for length 0
PLCDRIVER_API unsigned short CalCRC(const unsigned char* buffer, unsigned short length);

/// Longitudinal check (Modbus over Serial Line, section 6.2.1), not reduced to a byte.
/// \return 1..256; 256 where the sum's low byte is 0, so also for length 0
PLCDRIVER_API unsigned short CalLRC(const unsigned char* buffer, unsigned short length);

/// \return exclusive-or of the bytes; the first byte for length 0, so one byte MUST be readable
PLCDRIVER_API unsigned short CalXOR(const unsigned char* buffer, unsigned short length);

/// \return the character of a hexadecimal digit 0..15, capital letters; other values are not refused
PLCDRIVER_API int DigitalToASCII(int value);

/// \return the value of a hexadecimal digit, capital letters; 0 below '0' and for '@'; lower-case
///         letters are not folded
PLCDRIVER_API int ASCIIToDigital(int character);
/// @}

}  // extern "C"

#if defined(__i386__)
#define PLC_OFFSET(record, field, offset)                                                                  \
    static_assert(offsetof(record, field) == (offset), #record "." #field " has moved")

static_assert(sizeof(int) == 4 && sizeof(QString) == 4 && sizeof(QByteArray) == 4, "32-bit handles");

static_assert(sizeof(RW_VAR) == 60, "RW_VAR is 60 bytes");
PLC_OFFSET(RW_VAR, hostKey, 0);
PLC_OFFSET(RW_VAR, hostSubKey, 4);
PLC_OFFSET(RW_VAR, accessFlag, 8);
PLC_OFFSET(RW_VAR, spare3, 12);
PLC_OFFSET(RW_VAR, stationGroup, 16);
PLC_OFFSET(RW_VAR, result, 20);
PLC_OFFSET(RW_VAR, name, 24);
PLC_OFFSET(RW_VAR, name2, 28);
PLC_OFFSET(RW_VAR, area, 32);
PLC_OFFSET(RW_VAR, address, 36);
PLC_OFFSET(RW_VAR, station, 40);
PLC_OFFSET(RW_VAR, count, 44);
PLC_OFFSET(RW_VAR, storeSelector, 48);
PLC_OFFSET(RW_VAR, spare13, 52);
PLC_OFFSET(RW_VAR, data, 56);

static_assert(sizeof(Protocol) == 92, "Protocol is 92 bytes");
PLC_OFFSET(Protocol, frame, 0);
PLC_OFFSET(Protocol, frameLength, 4);
PLC_OFFSET(Protocol, replyLength, 8);
PLC_OFFSET(Protocol, dataOffset, 12);
PLC_OFFSET(Protocol, dataLength, 16);
PLC_OFFSET(Protocol, var, 20);
PLC_OFFSET(Protocol, extra0, 80);
PLC_OFFSET(Protocol, extra1, 84);
PLC_OFFSET(Protocol, extra2, 88);

static_assert(sizeof(COMINFO) == 76, "COMINFO is 76 bytes");
PLC_OFFSET(COMINFO, host0, 0);
PLC_OFFSET(COMINFO, maxBlockCount, 16);
PLC_OFFSET(COMINFO, host20, 20);
PLC_OFFSET(COMINFO, defaultStation, 24);
PLC_OFFSET(COMINFO, retryLimit, 28);
PLC_OFFSET(COMINFO, failCount, 32);
PLC_OFFSET(COMINFO, multiStation, 36);
PLC_OFFSET(COMINFO, host40, 40);
PLC_OFFSET(COMINFO, framesExpected, 44);
PLC_OFFSET(COMINFO, framesReceived, 48);
PLC_OFFSET(COMINFO, host52, 52);
PLC_OFFSET(COMINFO, remoteMode, 56);
PLC_OFFSET(COMINFO, localStation, 60);
PLC_OFFSET(COMINFO, hostWriteMode, 64);
PLC_OFFSET(COMINFO, cycleDone, 68);
PLC_OFFSET(COMINFO, portId, 72);

static_assert(sizeof(HOST_VAR) == 20, "HOST_VAR is 20 bytes");
PLC_OFFSET(HOST_VAR, area, 1);
PLC_OFFSET(HOST_VAR, station, 2);
PLC_OFFSET(HOST_VAR, address, 8);
PLC_OFFSET(HOST_VAR, name, 12);
PLC_OFFSET(HOST_VAR, count, 16);

#undef PLC_OFFSET
#endif

#endif
