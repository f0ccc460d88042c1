/*
 * Facts about VRFs reach the chip, and actions that were refused are asked for again.
 *
 * Three VRFs and the default VRF, each with the action that looks up in it. An event changes one fact,
 * the use of one action, or the chip. The library reacts to it, then the agent settles what is left.
 * After each event, for any number of events:
 *
 *   FRESH  The resource of each used action is programmed with the current facts of its walk, unless
 *          the chip refused that. An action without a resource, because its VRF has no id, gets one as
 *          soon as the VRF has an id.
 *   LIVE   No used action waits for room while the chip has room.
 *   KEPT   A programmed action has a resource, an action without a user has none, and the chip never
 *          makes more resources than its capacity.
 *
 * FAULT=1 does not ask again when room appears. FAULT=2 does not act on facts of the default VRF
 * beyond what the library does. Either violates a property.
 *
 * A change of a prefix length or of the flag for decapsulation has one effect: copies of the old value
 * are wrong. So a resource keeps, for each such fact, only whether its copy differs from the current
 * value. A second change makes an old copy right again.
 */

#ifndef FAULT
#define FAULT 0
#endif
#ifndef CAPACITY
#define CAPACITY 3 /* the largest one */
#endif
#ifndef PLANNED
#define PLANNED 1 /* whether the chip also refuses for other reasons than room */
#endif

#ifdef EVENTS /* a history has so many events, instead of any number */
byte eventsLeft = EVENTS;
#define isOver (eventsLeft == 0)
#define countEvent() eventsLeft--
#else
#define isOver false
#define countEvent() skip
#endif

#define VRFS 4
#define DEFAULT 3
#define NONE 4 /* no VRF */

/* Why an action is as it is: the outcome of the last hook call for it. */
mtype = { unused, programmed, noRoom, noId, refused };
mtype = { red, blue, green, default, none }; /* names, to print */

/* The facts. */
bool hasId[VRFS] = true;
byte fallback[VRFS] = NONE;

/* The chip. */
byte capacity = 1;
byte inUse = 0;
bool failsNext = false;
bool hasResource[VRFS];
byte copiedWalk[VRFS]; /* the walk of the program, as a number */
byte wrongLens[VRFS];  /* a bit for each VRF of the walk whose prefix lengths have changed since */
byte wrongIds[VRFS];   /* the same for ids */
bool wrongDecap[VRFS];

/* The agent. */
mtype outcome[VRFS] = unused;
byte queue[VRFS] = NONE; /* actions that wait for room, oldest first */

/* Used only within one event, and 0 between two. */
byte vrf;
byte to;
byte second;
byte third;
byte walk;
byte i;
byte j;
byte k;

/* A walk of at most three VRFs as a number with three digits. */
#define walkOf3(a, b, c) ((a) + 5 * (b) + 25 * (c))
#define isOn(v, w) ((w) % 5 == (v) || ((w) / 5) % 5 == (v) || (w) / 25 == (v))

#define isUsed(a) (outcome[a] != unused)
#define name(v)                                                                                  \
  ((v) == 0 -> red : ((v) == 1 -> blue : ((v) == 2 -> green : ((v) == 3 -> default : none))))

/* Whether programming the action again would change something. */
#define isStale(a)                                                                               \
  (hasResource[a] && (copiedWalk[a] != walk || wrongLens[a] || wrongIds[a] || wrongDecap[a]) ||  \
   outcome[a] == noId && hasId[a])

/* walk = the walk that begins with `v`, by the current facts. */
inline findWalk(v) {
  second = fallback[v];
  third = NONE;
  if
  :: second == NONE || second == v -> second = NONE
  :: else ->
    third = fallback[second];
    if
    :: third == v || third == second -> third = NONE
    :: else
    fi
  fi;
  walk = walkOf3(v, second, third)
}

/* ---- The chip ---- */

inline release(a) {
  if
  :: hasResource[a] -> hasResource[a] = false; inUse--
  :: else
  fi;
  forgetCopy(a)
}

inline forgetCopy(a) {
  copiedWalk[a] = 0;
  wrongLens[a] = 0;
  wrongIds[a] = 0;
  wrongDecap[a] = false
}

/* createVrf and updateVrf. The outcome is the first that applies. A resource whose update was refused
   may be wrong until an update succeeds, so its copies do not matter. */
inline program(a) {
  if
  :: failsNext -> failsNext = false; outcome[a] = refused; forgetCopy(a)
  :: else ->
    if
    :: !hasId[a] -> release(a); outcome[a] = noId
    :: else ->
      if
      :: !hasResource[a] && inUse >= capacity -> outcome[a] = noRoom
      :: else ->
        if
        :: !hasResource[a] -> hasResource[a] = true; inUse++;
          assert(inUse <= capacity) /* KEPT */
        :: else
        fi;
        findWalk(a);
        forgetCopy(a);
        copiedWalk[a] = walk;
        outcome[a] = programmed
      fi
    fi
  fi
}

/* ---- The library ---- */

/* The action that names `v`, if it is used. */
inline updateNaming(v) {
  if
  :: isUsed(v) -> program(v)
  :: else
  fi
}

/* `v`, the VRFs that fall back to it and, unless the fallback of `v` has changed, the VRFs that fall
   back to those. The library keeps no dependents of the default VRF. */
inline propagate(v, isFallbackChange) {
  updateNaming(v);
  i = 0;
  do
  :: i < VRFS ->
    if
    :: v != DEFAULT && fallback[i] == v ->
      updateNaming(i);
      j = 0;
      do
      :: j < VRFS ->
        if
        :: !isFallbackChange && i != DEFAULT && fallback[j] == i -> updateNaming(j)
        :: else
        fi;
        j++
      :: else -> break
      od
    :: else
    fi;
    i++
  :: else -> break
  od
}

inline updateAll() {
  i = 0;
  do
  :: i < VRFS -> updateNaming(i); i++
  :: else -> break
  od
}

/* ---- The agent and the chip layer, after the library ---- */

/* Re-programs what is used and stale, unless the chip refused its last update. */
inline refreshStale() {
  i = 0;
  do
  :: i < VRFS ->
    findWalk(i);
    if
    :: isUsed(i) && outcome[i] != refused && isStale(i) -> program(i)
    :: else
    fi;
    i++
  :: else -> break
  od
}

/* Removes from the queue what does not wait any more, and appends what began to wait. */
inline renewQueue() {
  i = 0;
  j = 0;
  do
  :: i < VRFS ->
    k = queue[i];
    queue[i] = NONE;
    if
    :: k != NONE && outcome[k] == noRoom -> queue[j] = k; j++
    :: else
    fi;
    i++
  :: else -> break
  od;
  i = 0;
  do
  :: i < VRFS ->
    if
    :: outcome[i] == noRoom && queue[0] != i && queue[1] != i && queue[2] != i && queue[3] != i ->
      queue[j] = i;
      j++
    :: else
    fi;
    i++
  :: else -> break
  od
}

/* Oldest first, while there is room. */
inline askAgain() {
  j = 0;
  do
  :: j < VRFS && queue[j] != NONE && inUse < capacity ->
    k = queue[j];
    program(k);
    j++
  :: else -> break
  od;
  renewQueue()
}

inline settle(changed) {
  if
  :: FAULT == 2 && changed == DEFAULT
  :: else -> refreshStale()
  fi;
  renewQueue();
  if
  :: FAULT == 1
  :: else -> askAgain()
  fi
}

/* ---- The properties ---- */

inline check() {
  i = 0;
  do
  :: i < VRFS ->
    findWalk(i);
    assert(!(isUsed(i) && outcome[i] != refused && isStale(i)));  /* FRESH */
    assert(!(outcome[i] == noRoom && inUse < capacity));          /* LIVE */
    assert(isUsed(i) || !hasResource[i]);                         /* KEPT */
    assert(outcome[i] != programmed || hasResource[i]);           /* KEPT */
    i++
  :: else -> break
  od;
  vrf = 0;
  to = 0;
  second = 0;
  third = 0;
  walk = 0;
  i = 0;
  j = 0;
  k = 0
}

/* ---- Events ---- */

/* The library acts on an id that a VRF gets, but not on an id that it loses. */
inline changeId(v) {
  i = 0;
  do
  :: i < VRFS ->
    if
    :: hasResource[i] && outcome[i] == programmed && isOn(v, copiedWalk[i]) ->
      wrongIds[i] = wrongIds[i] ^ (1 << v)
    :: else
    fi;
    i++
  :: else -> break
  od;
  hasId[v] = !hasId[v];
  if
  :: hasId[v] && v != DEFAULT -> propagate(v, false)
  :: else
  fi;
  settle(v)
}

inline changeLens(v) {
  i = 0;
  do
  :: i < VRFS ->
    if
    :: hasResource[i] && outcome[i] == programmed && isOn(v, copiedWalk[i]) ->
      wrongLens[i] = wrongLens[i] ^ (1 << v)
    :: else
    fi;
    i++
  :: else -> break
  od;
  propagate(v, false);
  settle(v)
}

inline changeFallback(v, f) {
  fallback[v] = f;
  propagate(v, true);
  settle(v)
}

inline changeDecap() {
  i = 0;
  do
  :: i < VRFS ->
    if
    :: hasResource[i] && outcome[i] == programmed -> wrongDecap[i] = !wrongDecap[i]
    :: else
    fi;
    i++
  :: else -> break
  od;
  updateAll();
  settle(NONE)
}

inline changeUse(a) {
  if
  :: isUsed(a) -> release(a); outcome[a] = unused
  :: else -> program(a)
  fi;
  settle(NONE)
}

/* The pause after a refusal is over, or an operator asks. */
inline retry() {
  i = 0;
  do
  :: i < VRFS ->
    if
    :: outcome[i] == refused -> program(i)
    :: else
    fi;
    i++
  :: else -> break
  od;
  settle(NONE)
}

active proctype events() {
end:
  do
  :: atomic {
      !isOver;
      if
      :: select(vrf : 0 .. 3);
        d_step { printf("event: use %e %d\n", name(vrf), !isUsed(vrf)); changeUse(vrf) }
      :: select(vrf : 0 .. 3);
        d_step { printf("event: id %e %d\n", name(vrf), !hasId[vrf]); changeId(vrf) }
      :: select(vrf : 0 .. 3);
        d_step { printf("event: lens %e\n", name(vrf)); changeLens(vrf) }
      :: select(vrf : 0 .. 3);
        select(to : 0 .. 4);
        if
        :: to != vrf && to != fallback[vrf] ->
          d_step { printf("event: fallback %e %e\n", name(vrf), name(to)); changeFallback(vrf, to) }
        :: else
        fi
      :: d_step { printf("event: decap\n"); changeDecap() }
      :: select(to : 0 .. CAPACITY);
        if
        :: to != capacity ->
          d_step { printf("event: capacity %d\n", to); capacity = to; settle(NONE) }
        :: else
        fi
      :: PLANNED && !failsNext -> printf("event: fail\n"); failsNext = true
      :: PLANNED -> d_step { printf("event: retry\n"); retry() }
      fi;
      d_step { check(); countEvent() }
    }
  od
}
