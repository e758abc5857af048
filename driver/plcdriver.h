// SPDX-License-Identifier: MIT
/// \file
/// \brief The one header that a runtime includes: records, entry points, utilities, result codes.
///
/// The driver does no input or output. The runtime's communication thread asks for the next frame
/// (ComCommunication()), sends its bytes, and hands whatever came back to DataCom(). Other threads may queue
/// writes and one-shot reads, switch stations off and on, and read or write registers meanwhile. This page
/// lists; the guide explains and has the recipes: guide.md, below share/doc/libplcdriver-dev where the driver is
/// installed, with the examples.
///
/// The records cross the boundary between two separately built modules. On the product platform (32-bit,
/// little-endian) their layout is fixed and checked below at compile time; QString, QByteArray and QList
/// are one-pointer handles, so runtime and driver must use the same QtCore (4.8 or 5, not 6).
///
/// There is one driver in a process. It is ready when the library is loaded and has no other start or stop;
/// no thread may be inside it when the library is unloaded.
///
/// Threads: each entry point says which may call it.
/// - "Wiring": one thread, before any other thread uses the driver, and after the others stopped.
/// - "Communication thread": one thread at a time, always the same one.
/// - "Any thread": at any time between wiring and unloading, also at once.
///
/// Locks: nothing of the driver is held while it waits for the network, for it never does. Entry points that
/// take the lock of the lists say so; that lock is not recursive and is held while a callback runs. One store
/// goes without the lock of the image, on purpose: that of a reply to a request of another station group
/// (RW_VAR::stationGroup is not COMINFO::localStation), to a read with RW_VAR::storeSelector -1 or to a write of
/// a bit inside a word. In the image a reader may see part of it; in multi-station mode GetRegisterData() and
/// SetRegisterData() MUST NOT run on another thread while DataCom() handles such a reply.
///
/// A runtime's account of its requests needs a lock of its own, over queueing and booking and over DataCom() and
/// booking: a request queued after DataCom() let go of the lock of the lists is not among those that it removed.
///
/// Failures: no entry point throws and none prints. A null record, list, string or byte array is refused:
/// nothing changes and the result is the one given for it. A call that runs out of memory gives up with the
/// same result, DataCom() with PLC_RETRYING. It may be made again: nothing of the request is queued, no lock
/// is held and a record handed over is as it was. Three calls leave something behind: ReCreatReadVarList() an
/// empty list, SetRegisterData() the pieces that it queued before, each of them whole, and what writes values
/// in multi-station mode, or after a failed reply, the first of them in the driver's memory.
#ifndef PLCDRIVER_H
#define PLCDRIVER_H

#include <QByteArray>
#include <QList>
#include <QString>

#include <cstddef>

/// Marks what the library exports.
#define PLCDRIVER_API __attribute__((visibility("default")))

/// \name Limits
/// What the driver holds, and how far it counts. Counts beyond the largest are cut to it where an entry point takes
/// an address text; whole records are queued as they are.
/// @{
const int PLC_AREA_COUNT = 15;                                 ///< area codes, 0..14
const int PLC_AREA_ELEMENTS = 65535;                           ///< elements of an area, 0..65534
const int PLC_WORD_BITS = 16;                                  ///< bits of a word, for area 8
const int PLC_AREA8_BITS = PLC_WORD_BITS * PLC_AREA_ELEMENTS;  ///< bits of area 8, 0..1048559
const int PLC_AREA14_READ_COUNT_MAX = PLC_AREA_ELEMENTS + 1;   ///< a read counts one more than it reads
const int PLC_AREA14_QUEUED_COUNT_MAX = 2 * PLC_AREA_ELEMENTS; ///< a queued write counts 16-bit words
const int PLC_BITS_PER_BLOCK_WORD = 8;                         ///< see COMINFO::maxBlockCount
const int PLC_LIST_LIMIT = 1024;                               ///< queued writes, and one-shot reads
const int PLC_LONGEST_RUN = 5;                                 ///< of writes, and of one-shot reads, in a row
/// @}

/// Result codes: what RW_VAR::result of the record returned by DataCom() says.
///
/// A failure is one of the six bases plus a fine offset that tells which of the runtime's variables failed:
/// base + 1 + RW_VAR::hostKey for a hostKey of 1..11, base + 1 for any other. Whether a reply counts as local
/// or remote is decided by RW_VAR::stationGroup.
enum PLC_RESULT {
    PLC_RETRYING = 0,          ///< failed; the same frame is handed out again, nothing is lost yet
    PLC_DONE = 1,              ///< good reply, filed where the request asks for it; or nothing outstanding
    PLC_LOCAL_CHECK = 10,      ///< 11..22: local reply refused by the data check (reserved, never given)
    PLC_LOCAL_NO_REPLY = 40,   ///< 41..52: no reply to a local request
    PLC_LOCAL_LENGTH = 70,     ///< 71..82: local reply of the wrong length (a Modbus exception is one)
    PLC_REMOTE_DONE = 100,     ///< good remote reply that was not filed, or second frame of a request
    PLC_REMOTE_CHECK = 110,    ///< 111..122: remote reply refused by the data check (reserved, never given)
    PLC_REMOTE_NO_REPLY = 140, ///< 141..152: no reply to a remote request
    PLC_REMOTE_LENGTH = 170,   ///< 171..182: remote reply of the wrong length
    PLC_UNKNOWN_OUTCOME = 200  ///< no case of the above (reserved, never given)
};

/// One variable request: 60 bytes on the product platform. The driver copies it by value into its lists, so
/// the caller may reuse or free its record. Start from `RW_VAR()`, which zeroes the numbers; never memset() a
/// record, it holds Qt objects.
///
/// Area codes: 0..7 bit areas, 8 a bit inside a 16-bit word of area 9, 9..13 word areas, 14 the area of
/// 32-bit double words. An area has the elements 0..65534; area 8 has the bits 0..1048559, word x 16 + bit.
///
/// Nothing is checked when a whole record is handed in. A request that cannot become a frame stays at the
/// head of its list and holds back what is queued behind it: a read of area 8 or outside 0..14; with Modbus
/// TCP also a write of area 0 or outside 0..14, and a write of area 8 to station 0.
struct RW_VAR {
    int hostKey;       ///< the runtime's identifier; 1..11 also selects the fine part of an error code
    int hostSubKey;    ///< second identifier; a one-shot read is reported once per pair of both
    int accessFlag;    ///< 0: data of a good reply is filed into the image; else judged only
    int spare3;        ///< carried through; requests of the rebuilt read list hold COMINFO::remoteMode
    int stationGroup;  ///< equal to COMINFO::localStation: local reply handling, else remote
    int result;        ///< a PLC_RESULT; meaningful in the record that DataCom() returns
    QString name;      ///< carried through
    QString name2;     ///< the address text where an entry point takes one; carried through
    int area;          ///< area code, 0..14
    int address;       ///< element within the area; frames carry its low 16 bits (remote frames all 32)
    int station;       ///< station number, the Modbus unit identifier, 0..255; 0 is broadcast
    int count;         ///< number of elements; reads of area 14: one more than its double words
    int storeSelector; ///< -1: reply filed in a special way (read-before-write; remote data to be filed)
    int spare13;       ///< carried through
    QByteArray data;   ///< value bytes, little-endian, one byte per bit; empty in the result record
};

/// One finished request frame: 92 bytes on the product platform. Owned by the driver; the runtime reads
/// it between ComCommunication() and DataCom() and changes nothing in it.
struct Protocol {
    QByteArray frame; ///< the bytes to send; the transaction number of a Modbus TCP frame is always 0
    int frameLength;  ///< bytes in frame
    int replyLength;  ///< bytes of the whole reply; 0: none is expected (broadcast); -1: any (never built)
    int dataOffset;   ///< first data byte in the reply: 9, or 0 where there is none
    int dataLength;   ///< data bytes in the reply
    RW_VAR var;       ///< the request that the frame was built for
    int extra0;       ///< 0
    int extra1;       ///< 0
    int extra2;       ///< 0
};

/// The runtime's settings block: 76 bytes, owned by the runtime, which must keep it alive as long as the
/// driver is used. The driver reads the runtime's words without a lock: they MUST NOT change while another
/// thread is inside the driver, and multiStation, remoteMode and localStation not while a request is queued
/// or in flight. Only DataCom() reads retryLimit: the communication thread may change it between its calls. Words
/// that only the driver writes may be read by the communication thread.
struct COMINFO {
    int host0[4];       ///< the runtime's
    int maxBlockCount;  ///< most elements of one request, in words; bit areas allow eight times as many;
                        ///< 0 or less: nothing is split or merged
    int host20;         ///< the runtime's
    int defaultStation; ///< station of every variable while multiStation is 0, 0..255
    int retryLimit;     ///< failures that are retried, 0 or more; one more is final
    int failCount;    ///< driver: failures of all requests since the last final one; a success does not clear
                      ///< it, so a request may have no tries left (guide: tries of its own)
    int multiStation; ///< 0: one station, values in the image; else values are kept per station
    int host40;       ///< the runtime's; SetComInfo() clears it
    int framesExpected; ///< driver: replies that make up the request in flight, 1 or 2
    int framesReceived; ///< driver: replies received for it
    int host52;         ///< the runtime's; SetComInfo() clears it
    int remoteMode;     ///< non-zero: remote frames for every request; 0: Modbus TCP
    int localStation;   ///< the station group that is served directly, compared with RW_VAR::stationGroup
    int hostWriteMode;  ///< 2: SetRegisterData() queues writes; else it changes the driver's memory only
    int cycleDone;      ///< driver: 1 when nothing was to send or a pass of the read list is answered,
                        ///< 0 after a failure or a rebuild (then written on the rebuilding thread)
    int portId;         ///< first argument of the one-shot-read callback
};

/// One cyclically refreshed variable, handed over in a list to ReCreatReadVarList(); 20 bytes on the
/// product platform. The driver only reads it and keeps no pointer to it.
struct HOST_VAR {
    signed char host0;     ///< the runtime's
    unsigned char area;    ///< area code, 0..14; in multi-station mode another one stops the read list
    unsigned char station; ///< station number, 1..255; used in multi-station mode only
    signed char host3;     ///< the runtime's
    int host4;             ///< the runtime's
    QString address;       ///< address text, as PLCAddressChangeIntef() takes it
    QString name;          ///< copied into RW_VAR::name
    int count;             ///< number of elements, 1 or more; area 14: one more than its double words
};

/// Told once for each one-shot read (each pair of hostKey and hostSubKey), when its last piece ended. Never
/// told: reads that were purged with another request, or discarded because their station is switched off, or
/// handled remotely.
///
/// Runs on the communication thread inside DataCom(), with the lock of the lists held. It MUST NOT call an
/// entry point that takes that lock, MUST NOT throw, MUST NOT wait, and should only note the call.
/// \param portId     COMINFO::portId
/// \param hostKey    identity of the read
/// \param hostSubKey identity of the read
/// \param status     1: its last piece was answered; 2: it failed for good
/// \return ignored
typedef int (*OnceReadDoneCallback)(int portId, int hostKey, int hostSubKey, int status);

/// Told when the frames of a Modbus TCP write were built (inside ComCommunication(), before anything is
/// sent), and after every final failure (inside DataCom()), when queued requests are purged.
///
/// Runs on the communication thread with the lock of the lists held; the same rules as for
/// OnceReadDoneCallback.
/// \param list    empty; belongs to the driver and is gone after the call
/// \param hostKey of the write whose frames were built, or of the request that failed
/// \param flag    1
/// \return ignored
typedef int (*ListDoneCallback)(QList<RW_VAR>* list, int hostKey, int flag);

extern "C" {

/// \name Wiring
/// @{

extern PLCDRIVER_API void* LB;  ///< first pointer of FlashLocalRegister(); the driver never reads it
extern PLCDRIVER_API void* LW;  ///< second pointer of FlashLocalRegister(); the driver never reads it
extern PLCDRIVER_API void* RWI; ///< third pointer of FlashLocalRegister(); the driver never reads it

/// Registers the settings block and clears its words COMINFO::host40 and COMINFO::host52 (offsets 40 and 52).
///
/// Wiring; no lock.
/// \param info the block, which stays the runtime's. Null unwires the driver: with no block nothing is sent,
///             queued by address text, read or rebuilt. Neither unwiring nor wiring anew clears anything: a
///             frame in flight, queued requests, the read list, switched-off stations and values stay (guide:
///             another project).
PLCDRIVER_API void SetComInfo(COMINFO* info);

/// Registers the two callbacks.
///
/// Wiring; no lock.
/// \param onceReadDone told when a one-shot read ended; null: nobody is told
/// \param listDone     told of writes built and of final failures; null: nobody is told
PLCDRIVER_API void RegistCallBackFuncIntf(OnceReadDoneCallback onceReadDone, ListDoneCallback listDone);

/// Stores three pointers of the runtime, for the runtime.
///
/// Wiring; no lock.
/// \param first  goes to LB
/// \param second goes to LW
/// \param third  goes to RWI
PLCDRIVER_API void FlashLocalRegister(void* first, void* second, void* third);

/// Says that the driver is there. Any thread; no lock.
/// \return always 1
PLCDRIVER_API int QueryFinishFlag();
/// @}

/// \name Request cycle
/// @{

/// Chooses the next request and returns its frame: writes first, then one-shot reads (each at most
/// #PLC_LONGEST_RUN in a row), then the cyclic reads in turn. While a frame is unanswered the same pointer is returned.
///
/// Communication thread; takes the lock of the lists unless a frame is unanswered, and may run
/// ListDoneCallback.
/// \return the frame to send, valid until DataCom() is called. Null when this call found nothing to send,
///         which does not mean that nothing is queued: it also happens after #PLC_LONGEST_RUN writes in a row, and when a
///         turn was spent on requests of switched-off stations.
PLCDRIVER_API Protocol* ComCommunication();

/// Judges the reply to the frame that ComCommunication() returned last, files its data, and finishes,
/// retries or gives up the request. MUST be called once for every frame sent. Only the length is judged:
/// the runtime MUST see to it that the reply belongs to the frame.
///
/// Communication thread; takes the locks of the lists and of the image, one after the other, and may run both
/// callbacks.
/// \param reply  the bytes received, a whole frame; the runtime's, and left as they are. Null is judged like an
///               empty array. Where it holds less than \a length says, what is there is filed; only a reply that
///               lacks the word into which a bit is to be written counts as one of the wrong length.
/// \param length number of bytes received, 0 when nothing arrived in time or no reply is expected
/// \return the driver's result record, never null, overwritten by the next call: a PLC_RESULT, and the
///         identity of the request last finished, without data. Result 1 when nothing was outstanding.
PLCDRIVER_API RW_VAR* DataCom(QByteArray* reply, int length);
/// @}

/// \name Variable lists
/// @{

/// The element number that an address text means.
///
/// Any thread; no lock.
/// \param area area code, 0..14
/// \param text areas 0 and 1 octal; 2..6 and 9..13 decimal; 7 decimal from 8000 on (element 0); 8 two
///             decimal numbers "word.bit"; 14 decimal from 200 on (element 0). Sign and surrounding spaces
///             are taken as QString::toInt() takes them. The bit of area 8 has no upper bound: 10.20 is 11.4.
/// \return the element; -1 (or another negative number, for a text with a sign) when the text names none or
///         its number does not fit into 32 bits; 0 for an area code outside 0..14. Elements beyond the area
///         are not refused.
PLCDRIVER_API int PLCAddressChangeIntef(int area, QString text);

/// Appends a copy of a request to the cyclic read list.
///
/// Takes no lock: MUST NOT be called while another thread is inside the driver. With null it only reads the size
/// of the list, and MAY be called by the communication thread at any time if that makes the rebuilds too.
/// \param var the request; not checked, see RW_VAR
/// \return entries in the read list, also for null
PLCDRIVER_API int AddListReadVar(RW_VAR* var);

/// Queues a write. A queued write to the same station, area, address and count is replaced in its place,
/// unless it is at the head (it may be on its way). At #PLC_LIST_LIMIT entries a new write is dropped.
///
/// Any thread; takes the lock of the lists.
/// \param var    the request; not checked, see RW_VAR. Only the first of several bits is sent.
/// \param direct 1: append without search or limit
/// \return entries in the write list, also for null
PLCDRIVER_API int AddListWriteVar(RW_VAR* var, int direct);

/// Queues a one-shot read, split into requests of at most COMINFO::maxBlockCount words (bit areas: eight
/// times as many elements). Pieces that are already queued under the same keys are skipped; at
/// #PLC_LIST_LIMIT entries new ones are dropped. A count beyond the size of the area is cut to it; a count below 1
/// queues nothing.
///
/// Any thread; takes the lock of the lists.
///
/// Area 8 becomes a read of the words that the bits span, whose number is the count from there on (a count of
/// 0 from bit 5 on spans one word), and always starts at word 1: read area 9 instead. A read of area 14
/// fetches one element less than its count, in each piece: keep its count within COMINFO::maxBlockCount.
/// \param var    the request. Its address comes from RW_VAR::name2; the record is changed (area, address,
///               station, count, storeSelector, spare13).
/// \param direct 1: append the record unchanged, without parsing, search or limit
/// \return entries in the one-shot list; 0 when the address text or the area is refused, with no settings
///         block, and for null
PLCDRIVER_API int AddListOnceReadVar(RW_VAR* var, int direct);

/// Replaces the cyclic read list: variables of one area (and, in multi-station mode, one station) are read
/// together when the span from the first to the end of the last is at most COMINFO::maxBlockCount words
/// (eight times as many bits), gaps included. Variables whose text names no element are skipped.
///
/// Any thread, best the communication thread between DataCom() and ComCommunication(); takes the lock of the
/// lists. A frame in flight stays in flight.
/// \param list the variables; the runtime's
/// \return entries in the new list in multi-station mode; always 0 in single-station mode, for an empty
///         list, with no settings block, and for null
PLCDRIVER_API int ReCreatReadVarList(QList<HOST_VAR>* list);
/// @}

/// \name Stations
/// @{

/// Switches communication with a station off or on. Cyclic reads of a switched-off station are skipped, its
/// writes and one-shot reads are discarded without a report, not by this call but when their turn comes while it
/// is off: one that is still queued when the station is switched on goes out. A frame in flight is finished.
///
/// Any thread; takes the lock of the stations only, so a callback may call it.
/// \param station station number; a negative one switches every station on, whatever the flag
/// \param flag    0: off; 1: on; any other: nothing happens
PLCDRIVER_API void EnCommStation(int station, int flag);
/// @}

/// \name Registers
/// @{

/// Writes values. With COMINFO::hostWriteMode 2 the write is queued for the controller: bits one request
/// each, words and double words in blocks of COMINFO::maxBlockCount; with any other mode only the
/// driver's memory changes.
///
/// Any thread; takes the lock of the lists for each piece that it queues, and that of the image. Its pieces
/// are not queued together: a poll may come between two of them, and so may a write of another thread. The
/// communication thread waits for one piece at most.
/// \param name       carried through in RW_VAR::name; null is refused all the same
/// \param area       1..14
/// \param address    address text, as PLCAddressChangeIntef() takes it
/// \param station    used in multi-station mode; else COMINFO::defaultStation
/// \param data       value bytes: one per bit, words and double words little-endian; 0 beyond the end
/// \param count      elements; for a queued write of area 14 the number of 16-bit words, two an element
/// \param hostKey    identity of the request in callbacks and result records
/// \param hostSubKey second identity of the request in result records
/// \return 0 when the address text or the area is refused, there is nothing to write, with no settings
///         block, and for a null name, text or data; 1 when only the driver's memory was written (also for an
///         area that it does not write); else entries in the write list after the last piece
PLCDRIVER_API int SetRegisterData(QString* name, int area, QString* address, unsigned int station,
                                  QByteArray* data, int count, int hostKey, unsigned int hostSubKey);

/// Reads values from the driver's memory; no frame is sent. Elements that were never read from the controller
/// nor written are 0.
///
/// Any thread; takes the lock of the image only, so a callback may call it. In multi-station mode it makes an
/// entry for every element asked for, and its time grows with their number.
/// \param unused  ignored
/// \param area    0..14; for another one the output becomes empty
/// \param address address text, as PLCAddressChangeIntef() takes it
/// \param station used in multi-station mode only
/// \param out     receives the bytes: one per bit, words and double words little-endian; zero for elements
///                beyond the area. Left as it was when the result is 0.
/// \param count   elements. Area 14: n+1 for n double words; 1 gives the low half of the element after
///                the address (in multi-station mode of the element itself).
/// \return 0 when the address text names no element, with no settings block, and for null; 1 otherwise
PLCDRIVER_API unsigned int GetRegisterData(int unused, int area, QString* address, int station,
                                           QByteArray* out, int count);
/// @}

/// \name Checksums and digits
/// Stateless; any thread, no lock. A null buffer gives 0 where it would be read.
/// @{

/// Sum of bytes.
/// \param buffer the bytes
/// \param length their number
/// \return the sum modulo 65536
PLCDRIVER_API unsigned short CalSUM(const unsigned char* buffer, unsigned short length);

/// CRC-16 as MODBUS over Serial Line V1.02, section 6.2.2, defines it: start 0xFFFF, polynomial 0xA001
/// (reflected).
/// \param buffer the bytes
/// \param length their number
/// \return the check value, low byte to be sent first; 0xFFFF for length 0
PLCDRIVER_API unsigned short CalCRC(const unsigned char* buffer, unsigned short length);

/// Longitudinal check as MODBUS over Serial Line V1.02, section 6.2.1, defines it, but not reduced to a byte.
/// \param buffer the bytes
/// \param length their number
/// \return 1..256; 256 where the sum's low byte is 0, so also for length 0
PLCDRIVER_API unsigned short CalLRC(const unsigned char* buffer, unsigned short length);

/// Exclusive-or of bytes.
/// \param buffer the bytes; one MUST be readable even when the length is 0
/// \param length their number
/// \return 0..255; the first byte for length 0
PLCDRIVER_API unsigned short CalXOR(const unsigned char* buffer, unsigned short length);

/// The character of a hexadecimal digit.
/// \param value 0..15; others are not refused: up to 9 it gives value + 48, above value + 55
/// \return the character code, capital letters
PLCDRIVER_API int DigitalToASCII(int value);

/// The value of a hexadecimal digit.
/// \param character the character code; lower-case letters are not folded
/// \return 0..15 for '0'..'9' and 'A'..'F'; 0 below '0' and for '@'; other characters up to '?' give
///         character - 48, those above '@' character - 55
PLCDRIVER_API int ASCIIToDigital(int character);
/// @}

} // extern "C"

#if defined(__SIZEOF_POINTER__) && __SIZEOF_POINTER__ == 4
#define PLC_OFFSET(record, field, offset)                                                                    \
    static_assert(offsetof(record, field) == (offset), #record "." #field " has moved")

static_assert(__BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__, "the records are little-endian");
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
