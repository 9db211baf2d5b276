#include "questionnaire/Objet.h"

CObjet::~CObjet() = default;
