/*
 * The calls that change the rules of an interface from one list into another.
 *
 * A rule matches some packet classes and has a treatment, which needs a resource of the chip. A packet
 * meets the treatment of the first rule that matches; without one it is looked up in the VRF of its
 * interface. The rules that stay are any common subsequence of the two lists. Both lists are merged
 * into one, in which each rule that stays has one entry. The chip holds the rules of some entries, in
 * their order. The calls are:
 *
 *   1. from the first entry to the last: add a new rule. A rule that moves up leaves its old entry at
 *      the same time. A rule that stays with another treatment is replaced in place. If the chip
 *      refuses an addition, take back all of this, from the last entry to the first, and keep the old
 *      list;
 *   2. from the last entry to the first: remove an old rule. A rule that moves down gets to its new
 *      entry at the same time.
 *
 * A rule's user is counted before the rule gets to the chip, and removed after the rule is gone from
 * it. The first user of a treatment makes its resource, the last one ends it. The old lists and the new
 * lists are all lists of up to four rules.
 *
 *   CONSISTENT  After every single call each packet meets its old or its new treatment. So a packet
 *               whose treatment does not change meets no other.
 *   WHOLE       At the end the chip has the new list or, after a refusal, the old one.
 *   COUNTED     At the end each treatment has one user for each of its rules on the chip.
 *
 * FAULT=3 adds a rule before it counts the user. FAULT=4 also moves rules
 * down before the old rules are removed. FAULT=5 goes on after a refusal. Each violates a property.
 */

#ifndef FAULT
#define FAULT 0
#endif
#ifndef ASSUMED
#define ASSUMED true /* a condition on the lists and the rules that stay, to search less */
#endif
#ifndef LENGTH
#define LENGTH 4 /* the longest list */
#endif

/* Two packet classes, p and q, and two treatments, x and y. A rule is named after the classes that it
   matches and its treatment. */
#define CLASSES 2
mtype = { px, pqy, qx, qy };
#define matchOf(r) ((r) == px -> 1 : ((r) == pqy -> 3 : 2)) /* a bit for each class */
#define treatmentOf(r) ((r) == px || (r) == qx -> 1 : 2)
#define matches(r, c) (matchOf(r) & (1 << (c)))
#define ownVrf 0
#define noResource 3 /* the packet is dropped, since the rule's resource is not there */

#define NONE 255

mtype oldList[LENGTH];
mtype newList[LENGTH];
byte oldCount = 0;
byte newCount = 0;
byte keptAt[LENGTH] = NONE; /* for each new rule, the place of the old rule that stays for it */
bool isKept[LENGTH];        /* for each old rule */
bool atTop; /* between two rules that stay, new rules are in front of old ones, or behind them */

/* The merged lists. */
mtype = { isOld, isNew, stays };
mtype kind[2 * LENGTH];
mtype rule[2 * LENGTH];
mtype wanted[2 * LENGTH]; /* of a rule that stays, the rule that replaces it */
byte other[2 * LENGTH] = NONE; /* of a rule that moves, its entry of the other list */
bool held[2 * LENGTH];
bool isReplaced[2 * LENGTH];
byte count = 0;
byte inUse = 0; /* rules on the chip before removals */
byte users[3];

byte oldMeets[CLASSES];
byte newMeets[CLASSES];
bool accepted = true;

/* Used only within one change, and 0 between two. */
mtype chosen;
byte at;
byte next;
byte i;
byte c;
byte met;

/* ---- What packets meet ---- */

/* met = what a packet of class `c` meets */
inline meet() {
  met = ownVrf;
  i = 0;
  do
  :: i < count ->
    if
    :: held[i] && matches(rule[i], c) ->
      met = (users[treatmentOf(rule[i])] > 0 -> treatmentOf(rule[i]) : noResource);
      break
    :: else -> i++
    fi
  :: else -> break
  od
}

inline check() {
  c = 0;
  do
  :: c < CLASSES ->
    meet();
    assert(met == oldMeets[c] || met == newMeets[c]); /* CONSISTENT */
    c++
  :: else -> break
  od
}

inline findOldMeets() {
  c = 0;
  do
  :: c < CLASSES -> meet(); oldMeets[c] = met; c++
  :: else -> break
  od
}

/* With all users of the new list. */
inline findNewMeets() {
  c = 0;
  do
  :: c < CLASSES ->
    newMeets[c] = ownVrf;
    i = 0;
    do
    :: i < newCount && matches(newList[i], c) -> newMeets[c] = treatmentOf(newList[i]); break
    :: i < newCount && !matches(newList[i], c) -> i++
    :: i == newCount -> break
    od;
    c++
  :: else -> break
  od
}

/* ---- Calls ---- */

inline addUser(r) {
  users[treatmentOf(r)]++;
  check()
}

inline removeUser(r) {
  users[treatmentOf(r)]--;
  check()
}

inline addRule(entry) {
  held[entry] = true;
  check()
}

inline removeRule(entry) {
  held[entry] = false;
  check()
}

inline moveRule(from, to) {
  held[from] = false;
  held[to] = true;
  check()
}

/* The next replacement of the entry takes this one back. */
inline replaceRule(entry) {
  chosen = rule[entry];
  rule[entry] = wanted[entry];
  wanted[entry] = chosen;
  check()
}

/* ---- The change ---- */

inline replaceWithUsers() {
  addUser(wanted[at]);
  replaceRule(at);
  removeUser(wanted[at])
}

inline addWithUser() {
  if
  :: accepted = true
  :: accepted -> accepted = false; printf("list: full with %d\n", inUse)
  fi;
  d_step {
    if
    :: FAULT != 3 -> addUser(rule[at])
    :: else
    fi;
    if
    :: accepted -> inUse++; addRule(at)
    :: else
    fi;
    if
    :: FAULT == 3 && accepted -> addUser(rule[at])
    :: FAULT != 3 && !accepted -> removeUser(rule[at])
    :: else
    fi;
    i = 0
  }
}

inline addNew() {
  at = 0;
  do
  :: at < count && (accepted || FAULT == 5) ->
    if
    :: kind[at] == stays && rule[at] != wanted[at] -> d_step { replaceWithUsers(); isReplaced[at] = true }
    :: kind[at] == isNew && other[at] == NONE -> addWithUser()
    :: kind[at] == isNew && other[at] != NONE && (other[at] > at || FAULT == 4) ->
      d_step { moveRule(other[at], at); i = 0 }
    :: else
    fi;
    at++
  :: else -> break
  od
}

inline removeOld() {
  at = count;
  do
  :: at > 0 ->
    at--;
    if
    :: kind[at] == isOld && held[at] && other[at] == NONE -> removeRule(at); removeUser(rule[at])
    :: kind[at] == isOld && held[at] && other[at] != NONE -> moveRule(at, other[at])
    :: else
    fi
  :: else -> break
  od
}

inline undo() {
  at = count;
  do
  :: at > 0 ->
    at--;
    if
    :: isReplaced[at] -> replaceWithUsers(); isReplaced[at] = false
    :: kind[at] == isNew && held[at] && other[at] == NONE -> removeRule(at); removeUser(rule[at])
    :: kind[at] == isNew && held[at] && other[at] != NONE -> moveRule(at, other[at])
    :: else
    fi
  :: else -> break
  od
}

inline checkEnd() {
  i = 0;
  do
  :: i < count ->
    assert(held[i] == (kind[i] == stays || kind[i] == (accepted -> isNew : isOld))); /* WHOLE */
    assert(kind[i] != stays || isReplaced[i] == (accepted && rule[i] != wanted[i])); /* WHOLE */
    if
    :: held[i] -> users[treatmentOf(rule[i])]--
    :: else
    fi;
    i++
  :: else -> break
  od;
  assert(users[1] == 0 && users[2] == 0) /* COUNTED */
}

/* All runs end in one state. */
inline forget() {
  i = 0;
  do
  :: i < 2 * LENGTH ->
    kind[i] = 0;
    rule[i] = 0;
    wanted[i] = 0;
    other[i] = NONE;
    held[i] = false;
    isReplaced[i] = false;
    i++
  :: else -> break
  od;
  i = 0;
  do
  :: i < LENGTH -> oldList[i] = 0; newList[i] = 0; keptAt[i] = NONE; isKept[i] = false; i++
  :: else -> break
  od;
  oldCount = 0;
  newCount = 0;
  count = 0;
  inUse = 0;
  accepted = true;
  atTop = false;
  users[1] = 0;
  users[2] = 0;
  oldMeets[0] = 0;
  oldMeets[1] = 0;
  newMeets[0] = 0;
  newMeets[1] = 0;
  chosen = 0;
  at = 0;
  next = 0;
  c = 0;
  met = 0;
  i = 0
}

/* ---- Lists ---- */

inline chooseRule() {
  if
  :: chosen = px
  :: chosen = pqy
  :: chosen = qx
  :: chosen = qy
  fi
}

/* Rules that stay have the same match in both lists. */
inline chooseWhatStays() {
  at = 0;
  next = 0;
  do
  :: next < newCount ->
    i = at;
    do
    :: i < oldCount && matchOf(oldList[i]) == matchOf(newList[next]) ->
      printf("list: stays %d %d\n", i, next);
      keptAt[next] = i;
      isKept[i] = true;
      at = i + 1;
      break
    :: i < oldCount -> i++
    :: i == oldCount -> break
    od;
    next++
  :: else -> break
  od;
  select(i : 0 .. 1);
  atTop = i
}

inline append(k, r) {
  kind[count] = k;
  rule[count] = r;
  wanted[count] = r;
  held[count] = k != isNew;
  if
  :: k != isNew -> users[treatmentOf(r)]++; inUse++
  :: else
  fi;
  count++
}

#define isNextNew (next < newCount && keptAt[next] == NONE)
#define isNextOld (at < oldCount && !isKept[at])

inline merge() {
  at = 0;
  next = 0;
  do
  :: isNextNew && (atTop || !isNextOld) -> append(isNew, newList[next]); next++
  :: isNextOld && !(atTop && isNextNew) -> append(isOld, oldList[at]); at++
  :: !isNextNew && !isNextOld && at < oldCount ->
    append(stays, oldList[at]);
    wanted[count - 1] = newList[next];
    at++;
    next++
  :: !isNextNew && !isNextOld && at == oldCount -> break
  od;
  i = 0
}

/* A new rule that equals an old one may move from there. */
inline chooseWhatMoves() {
  at = 0;
  do
  :: at < count ->
    i = 0;
    do
    :: i < count && kind[at] == isNew && kind[i] == isOld && other[i] == NONE && rule[i] == rule[at] ->
      other[at] = i;
      other[i] = at;
      break
    :: i < count -> i++
    :: i == count -> break
    od;
    at++
  :: else -> break
  od
}

active proctype change() {
  do
  :: oldCount < LENGTH ->
    atomic {
      chooseRule();
      printf("list: old %e\n", chosen);
      oldList[oldCount] = chosen;
      oldCount++;
      chosen = 0
    }
  :: break
  od;
  do
  :: newCount < LENGTH ->
    atomic {
      chooseRule();
      printf("list: new %e\n", chosen);
      newList[newCount] = chosen;
      newCount++;
      chosen = 0
    }
  :: break
  od;
  atomic {
    chooseWhatStays();
    if
    :: ASSUMED ->
      d_step { merge(); findOldMeets(); findNewMeets(); i = 0 };
      chooseWhatMoves();
      addNew();
      if
      :: accepted || FAULT == 5 -> d_step { removeOld(); checkEnd() }
      :: else -> d_step { undo(); checkEnd() }
      fi
    :: else
    fi;
    d_step { forget() }
  }
}
