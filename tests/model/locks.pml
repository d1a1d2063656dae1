/* The locks of the low-level client: three threads that register, unregister and call while calls fail
 * and the service dies once and comes back. spin shows that no thread waits for ever, that the death of
 * a service is heard while its proxy is bound, and that a registration that has waited for the registry
 * still has a proxy. Each of these macros puts a fault in:
 *   REGISTRY_KEPT     a failed call keeps the registry's mutex while it drops the proxy: two threads hang
 *   BOTH_AT_ONCE      the registry's mutex is waited for without the shared lock: a registration is lost
 *   DESTROYED_LOCKED  an entry is destroyed before the registry's mutex is released: its thread hangs
 *   UNLINKED_LATE     the driver hears of a dropped proxy with the thread's next call: a death is missed
 */
byte readers, waitingWriters;  /* g_mirx_hal_mutex; a waiting writer keeps new readers out */
bool writing;
bool registry;                 /* listening_callback_mutex */
bool bound;                    /* g_mirx_hal is set */
bool alive = true;             /* the service */
bool linked;                   /* the driver will tell of the service's death */
bool notice;                   /* it has told */
byte running = 3;

inline lockShared()      { atomic { !writing && waitingWriters == 0 -> readers++ } }
inline unlockShared()    { readers-- }
inline lockExclusive()   { waitingWriters++; atomic { readers == 0 && !writing -> writing = true; waitingWriters-- } }
inline unlockExclusive() { writing = false }
inline lockRegistry()    { atomic { !registry -> registry = true } }
inline unlockRegistry()  { registry = false }

/* Whatever a thread has queued for the driver goes out with its next command. */
inline flush() { atomic { if :: queued -> linked = false; queued = false :: else fi } }

inline bind() {
    lockShared();
    if
    :: bound -> unlockShared()
    :: else ->
        unlockShared();
        lockExclusive();
        if
        :: bound
        :: else ->
            alive;  /* waits for the service */
            bound = true;
            flush();
            atomic { if :: alive -> linked = true :: else -> bound = false fi }
        fi;
        unlockExclusive()
    fi
}

inline drop() {
    lockExclusive();
    if
    :: bound ->
#ifdef UNLINKED_LATE
        atomic { queued = linked; bound = false }
#else
        linked = false;
        bound = false
#endif
    :: else
    fi;
    unlockExclusive()
}

inline callService() { flush(); if :: alive -> ok = true :: ok = false fi }

/* A callback's destructor may do whatever a caller may: here it registers, and the call fails. */
inline destroyCallback() { lockShared(); lockRegistry(); unlockShared(); unlockRegistry(); drop() }

inline register() {
    bind();
#ifdef BOTH_AT_ONCE
    atomic { waited = registry; !registry && !writing && waitingWriters == 0 -> registry = true; readers++ }
    assert(bound || !waited || !alive);
    waited = false;
#else
    lockShared();
#endif
    if
    :: !bound -> unlockShared();
#ifdef BOTH_AT_ONCE
        unlockRegistry()
#endif
    :: else ->
#ifndef BOTH_AT_ONCE
        lockRegistry();
        assert(bound);
#endif
        callService();
        unlockShared();
#ifdef REGISTRY_KEPT
        if :: ok -> ok = false :: else -> drop() fi;
        unlockRegistry()
#else
        unlockRegistry();
        if :: ok -> ok = false :: else -> drop() fi
#endif
    fi
}

inline unregister() {
    bind();
    lockShared();
    if
    :: !bound -> unlockShared()
    :: else ->
        callService();
        unlockShared();
        lockRegistry();
#ifdef DESTROYED_LOCKED
        destroyCallback();
        unlockRegistry();
#else
        unlockRegistry();
        destroyCallback();
#endif
        if :: ok -> ok = false :: else -> drop() fi
    fi
}

inline call() {
    bind();
    lockShared();
    if
    :: !bound -> unlockShared()
    :: else -> callService(); unlockShared(); if :: ok -> ok = false :: else -> drop() fi
    fi
}

proctype Thread(byte kind) {
    bool ok, queued, waited;
    if :: kind == 0 -> register() :: kind == 1 -> unregister() :: kind == 2 -> call() fi;
    flush();
    running--
}

active proctype Service() {
    /* A proxy that is bound is linked, but for the moments in which its binding changes it. */
    atomic { assert(!bound || linked || writing); alive = false; notice = linked; linked = false }
    alive = true
}

active proctype DeathNotice() {
    bool queued;
    do
    :: atomic { notice -> notice = false }; drop()
    :: atomic { running == 0 && !notice -> break }
    od
}

/* Every choice of three; which thread does what makes no difference. */
init {
    byte a, b, c;
    select(a : 0 .. 2); select(b : a .. 2); select(c : b .. 2);
    atomic { run Thread(a); run Thread(b); run Thread(c) }
}
